#pragma once

#include <string>

/**
 * Loads the same value file twice, on the fast path and only on the general one.
 *
 * @param bytes the content of the file
 * @param plainLines if not null, gets the number of lines that the fast path took
 * @return empty when results, items, line counts and error counts are the same; else what differs
 */
std::string differenceOfWays(const std::string& bytes, int* plainLines = nullptr);
