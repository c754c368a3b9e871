#pragma once

#include <string>

namespace base {

/**
 * The absolute path of a file for a line of a case configuration, which can then be played from
 * anywhere.
 *
 * @throws CaseError if such a line cannot contain the path: "," ends a field, "#" begins a comment,
 *         and the simulator reads any white space between two words as one blank
 */
std::string configurationPath(const std::string& name);

} // namespace base
