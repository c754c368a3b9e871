#pragma once

#include <string_view>

namespace assess {

/** The text of a built-in table of limits, as a file of limits would have it; empty for another
 * name. */
std::string_view builtInLimits(std::string_view name);

} // namespace assess
