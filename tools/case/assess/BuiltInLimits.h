#pragma once

#include <string_view>

namespace assess {

/** A built-in table in the format of a file of limits; empty for an unknown name. */
std::string_view builtInLimits(std::string_view name);

} // namespace assess
