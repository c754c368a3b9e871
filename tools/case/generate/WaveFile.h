#pragma once

#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "generate/Wave.h"

namespace generate {

/**
 * Writes the wave as an input value file: the comments, a comment that names the columns, then a
 * line of 13 fields per sample. The sample's number in the file stands in the auxiliary word too,
 * so that a recording of the sample stream shows where each record comes from; the flags are 0.
 *
 * The caller commits the file.
 */
void writeWave(const Wave& wave, std::vector<std::string> comments, base::ResultFile& output);

} // namespace generate
