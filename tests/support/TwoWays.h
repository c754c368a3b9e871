#pragma once

#include <string>

/**
 * Loads the same value file twice, the fast way and only the general way.
 *
 * @param bytes the content of the file
 * @param plainLines if not null, gets the number of lines that the fast way took
 * @return empty when results, items, line counts and error counts are the same; else what differs
 */
std::string differenceOfWays(const std::string& bytes, int* plainLines = nullptr);
