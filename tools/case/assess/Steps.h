#pragma once

#include <optional>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** A step of the expected values, between two values or over a few. */
struct Step
{
    qint64 mBeginNs; ///< of the last value before it
    qint64 mEndNs;   ///< of the first value after it
    double mBefore;  ///< that value
    double mSize;    ///< without the change by the slopes before and after it
};

/**
 * Finds steps: nine values before and nine after are steady or change at a constant rate, and they
 * differ by more than 1 % (1 degree for angles). A step may take up to 0.2 s or four values,
 * because of a filter. Modulation and ramps have no steps.
 */
std::vector<Step> findSteps(const std::vector<Sample>& samples, bool isAngle);

/** Degrees from -180 up to 180. */
double wrapped(double degrees);

/** How a measured series follows a step. */
struct StepResponse
{
    qint64 mStepNs = 0;      ///< time at which the expected values reach half of the step
    double mDelay = 0.0;     ///< s; from then until the measured values reach it
    double mOvershoot = 0.0; ///< percent of the step; the largest, before or after it
};

/** Nothing if the measured values never reach half of the step. Requires: both are sorted. */
std::optional<StepResponse> responseTo(const Step& step, const std::vector<Sample>& expected,
                                       const std::vector<Sample>& measured, bool isAngle);

} // namespace assess
