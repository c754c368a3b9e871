#pragma once

#include "assess/Limits.h"
#include "assess/Phasors.h"

namespace assess {

/**
 * Adds the responses of the measured phasors to the steps of the expected ones, at the time of each
 * step. Their expected value is 0:
 * - "step-response-tve", "-frequency", "-rocof": s, how long the error around the step stays beyond
 *   the limit for steady signals; interpolated linearly between values;
 * - "step-delay": s, how much later half of the step is reached;
 * - "step-overshoot": percent of the step.
 *
 * Requires: `computed` has the total vector errors.
 */
void addStepResponses(const ValueTable& expected, const ValueTable& measured,
                      const LimitTable& limits, ComputedSeries& computed);

} // namespace assess
