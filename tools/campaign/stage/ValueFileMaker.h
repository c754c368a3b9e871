#pragma once

#include <string>
#include <vector>

#include "plan/Plan.h"

namespace stage {

/**
 * Makes the value file of a source, as vx-case does; a value file is copied, so that what was
 * played is kept. The same source makes the same bytes.
 *
 * @param path a new file
 * @return what is odd, or had to be assumed
 * @throws CaseError for what cannot be read, made or written
 */
std::vector<std::string> makeValueFile(const plan::Source& source, const std::string& path);

} // namespace stage
