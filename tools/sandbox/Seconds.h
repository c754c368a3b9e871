#pragma once

#include <cstdint>
#include <string>

namespace sandbox {

/**
 * Reads decimal seconds of the command line, such as 3 or 0.25; returns them in nanoseconds.
 * Throws a std::runtime_error that names `option` for anything else, and above 1e9 s.
 */
std::int64_t parseSeconds(const std::string& option, const std::string& text);

} // namespace sandbox
