#pragma once

#include <string>

namespace base {

/**
 * The absolute path of a file, as a line of a case configuration names it: it can then be played
 * from anywhere.
 *
 * @throws CaseError when such a line cannot hold it: "," ends a field and "#" begins a comment,
 *         and the simulator makes one blank of all white space between two words.
 */
std::string configurationPath(const std::string& name);

} // namespace base
