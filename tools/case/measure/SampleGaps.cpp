#include "measure/SampleGaps.h"

#include <fmt/format.h>

#include <algorithm>

namespace measure {

namespace {
/** Jitter and coarse clocks stay below both. */
constexpr double kMinGapSeconds = 0.004;
constexpr double kMinGapSteps = 10.0;
constexpr double kMinEvenGapSteps = 1.9; ///< a missing sample makes two steps one
} // namespace

void SampleGaps::add(const std::vector<double>& seconds)
{
    for (const double now : seconds) {
        const double step = mHasLast ? now - mLast : 0.0;
        if (isGap(step)) {
            setGap(mLast, step);
        } else if (step > 0.0) {
            addEvenStep(step);
            mStep = step;
        }
        mLast = now;
        mHasLast = true;
    }
}

bool SampleGaps::isGap(double step) const
{
    return mStep > 0.0 && step > kMinGapSeconds && step > kMinGapSteps * mStep;
}

/** Checks the step before this one. If the frequency changes, only one neighbour is shorter. */
void SampleGaps::addEvenStep(double step)
{
    if (mClock == Clock::Even && mStep > kMinEvenGapSteps * std::max(mStepBefore, step)) {
        setGap(mLast - mStep, mStep);
    }
    mStepBefore = mStep;
}

/** Only the first gap counts. */
void SampleGaps::setGap(double begin, double length)
{
    if (mGapLength == 0.0) {
        mGapSeconds = begin;
        mGapLength = length;
    }
}

std::string SampleGaps::problem() const
{
    return mGapLength == 0.0 ? ""
                             : fmt::format(
                                   "samples are missing for {:.6f} s after {:.6f} s: nothing can "
                                   "be measured across the gap; cut the recording there",
                                   mGapLength, mGapSeconds);
}

} // namespace measure
