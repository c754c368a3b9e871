#pragma once

#include <string>
#include <vector>

#include "assess/Phasors.h"

namespace assess {

/**
 * Finds out whether a device ends events one period too early: all durations of dips, swells and
 * interruptions are one period shorter than expected, to a quarter of a period. IEC 61000-4-30
 * allows this error, so it is reported for good verdicts, too.
 * @param computed with the events that addEvents() matched
 * @return sentences
 */
std::vector<std::string> diagnoseEvents(const ComputedSeries& computed, double nominalHz);

} // namespace assess
