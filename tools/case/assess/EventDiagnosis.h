#pragma once

#include <string>
#include <vector>

#include "assess/Phasors.h"

namespace assess {

/**
 * Whether a device stamps the end of events one period too early: all durations of dips, swells
 * and interruptions are one period shorter than expected, to a quarter of a period. As
 * IEC 61000-4-30 allows just that much, it is looked for where the verdict is good, too.
 * @param computed with what addEvents() matched
 * @return sentences
 */
std::vector<std::string> diagnoseEvents(const ComputedSeries& computed, double nominalHz);

} // namespace assess
