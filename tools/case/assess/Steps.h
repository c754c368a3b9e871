#pragma once

#include <optional>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** A step of the expected values: between two of them, or over a few. */
struct Step
{
    qint64 mBeginNs; ///< of the last value before it
    qint64 mEndNs;   ///< of the first value after it
    double mBefore;  ///< value there
    double mSize;    ///< beyond what the slope before and after it makes
};

/**
 * Finds steps: the values are steady, or change at a constant rate, over nine values before and
 * after, and differ by more than 1 % (1 degree for angles). A step may take up to 0.2 s, or four
 * values: those of a filter. Modulation and ramps have none.
 */
std::vector<Step> findSteps(const std::vector<Sample>& samples, bool isAngle);

/** Degrees from -180 up to 180. */
double wrapped(double degrees);

/** How a measured series follows a step. */
struct StepResponse
{
    qint64 mStepNs = 0;  ///< where the expected values have made half of the step
    double mDelay = 0.0; ///< s; from there to where the measured ones have
    double mOvershoot =
        0.0; ///< percent of the step; what is beyond the expected values before or after
};

/** Nothing where the measured values never make half of the step. Both sorted. */
std::optional<StepResponse> responseTo(const Step& step, const std::vector<Sample>& expected,
                                       const std::vector<Sample>& measured, bool isAngle);

} // namespace assess
