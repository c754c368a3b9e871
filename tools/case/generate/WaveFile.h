#pragma once

#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "generate/LineSource.h"
#include "generate/SampleMeter.h"

namespace generate {

/** The nearest whole numbers, which are written. */
std::array<qint32, kChannelCount> roundedValues(const LineValues& values);

/**
 * Writes the lines as an input value file: the comments, a comment that names the columns, then a
 * line of 13 fields per sample. The sample's number in the file stands in the auxiliary word too,
 * so that a recording of the sample stream shows where each record comes from; the flags are 0.
 *
 * The meter gets every line that is written; null if nothing is to be measured, which saves time.
 * The caller commits the file.
 */
void writeLines(LineSource& source, std::vector<std::string> comments, base::ResultFile& output,
                SampleMeter* meter = nullptr);

} // namespace generate
