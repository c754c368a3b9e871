#pragma once

#include <string>
#include <vector>

#include "plan/Plan.h"

namespace stage {

/**
 * Makes the value file of a source, as vx-case does. A user's value file is copied, so that the
 * night keeps what was played. The same source makes the same bytes.
 *
 * @param path a new file
 * @return remarks on oddities and assumptions
 * @throws CaseError if a file cannot be read, made or written
 */
std::vector<std::string> makeValueFile(const plan::Source& source, const std::string& path);

} // namespace stage
