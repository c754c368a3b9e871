#pragma once

#include <string>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** Channels that have each other's values. */
struct SwappedChannels
{
    std::vector<std::string> mChannels;
    std::string mText; ///< in words
};

/**
 * Finds channels of one kind (voltages, currents, powers) whose values agree far better with the
 * expected values of another channel: swapped pairs, and phases that are all rotated by one.
 */
std::vector<SwappedChannels> findSwaps(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs);

} // namespace assess
