#pragma once

#include "assess/Limits.h"
#include "assess/Phasors.h"

namespace assess {

/**
 * Adds how the measured phasors follow the steps of the expected ones, at the time of each step;
 * all of it is expected to be 0:
 * - "step-response-tve", "-frequency", "-rocof": s, how long the error stays beyond the limit that
 *   the table has for steady signals, around the step, between values by a straight line;
 * - "step-delay": s, when half of the step is made;
 * - "step-overshoot": percent of the step.
 *
 * Requires: `computed` has the total vector errors.
 */
void addStepResponses(const ValueTable& expected, const ValueTable& measured,
                      const LimitTable& limits, ComputedSeries& computed);

} // namespace assess
