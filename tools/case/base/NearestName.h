#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace base {

/**
 * The names that a mistyped one is nearest to, the nearest first; of several that are equally near,
 * in their order. Near is what takes few insertions, deletions and replacements of a byte.
 */
std::vector<std::string> nearestNames(std::string_view mistyped, std::vector<std::string> names,
                                      size_t count);

} // namespace base
