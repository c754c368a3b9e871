#pragma once

#include <string>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/**
 * Finds time stamps that are wrong by whole seconds or half hours: the values agree far better with
 * such an offset.
 */
std::vector<std::string> diagnoseClock(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs);

/**
 * Delay of a series in seconds, if it agrees far better with such a delay of up to 20 intervals;
 * otherwise 0. Requires: both are sorted.
 */
double delayOf(const std::vector<Sample>& expected, const std::vector<Sample>& measured);

} // namespace assess
