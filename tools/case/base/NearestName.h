#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace base {

/**
 * The names that are most similar to a mistyped one, the nearest first, equal ones in their
 * order. The distance is the number of bytes to insert, delete or replace.
 */
std::vector<std::string> nearestNames(std::string_view mistyped, std::vector<std::string> names,
                                      size_t count);

} // namespace base
