#pragma once

#include <string>
#include <vector>

#include "assess/Assessment.h"

namespace assess {

/**
 * Possible causes of errors, as questions to the user: swapped channels, a wrong ratio or sign, a
 * delay, a clock error of whole seconds or hours. Nothing is corrected.
 */
std::vector<std::string> diagnose(const ValueTable& expected, const ValueTable& measured,
                                  const std::vector<SeriesResult>& results, qint64 toleranceNs);

} // namespace assess
