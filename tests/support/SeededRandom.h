#pragma once

#include <cstdlib>
#include <iostream>
#include <random>

/** Differs from run to run; prints its seed, and VX_TEST_SEED gives it again. */
inline std::mt19937 seededRandom()
{
    const char* const given = std::getenv("VX_TEST_SEED");
    const auto seed = given == nullptr ? std::random_device()()
                                       : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
    std::cout << "VX_TEST_SEED=" << seed << std::endl;
    return std::mt19937(seed);
}
