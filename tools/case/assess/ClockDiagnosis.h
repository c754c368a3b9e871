#pragma once

#include <string>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/**
 * Says by how many whole seconds or half hours the time stamps are off, when the values agree far
 * better with such an offset.
 */
std::vector<std::string> diagnoseClock(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs);

/**
 * By how many seconds a series is late, when it agrees far better with such a delay of up to 20
 * intervals; 0 where it does not. Requires: both are sorted.
 */
double delayOf(const std::vector<Sample>& expected, const std::vector<Sample>& measured);

} // namespace assess
