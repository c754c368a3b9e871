#include "measure/SampleGaps.h"

#include <fmt/format.h>

namespace measure {

namespace {
/** Jitter and coarse clocks stay below both. */
constexpr double kMinGapSeconds = 0.004;
constexpr double kMinGapSteps = 10.0;
} // namespace

void SampleGaps::add(const std::vector<double>& seconds)
{
    for (const double now : seconds) {
        const double step = mHasLast ? now - mLast : 0.0;
        const bool isGap = mStep > 0.0 && step > kMinGapSeconds && step > kMinGapSteps * mStep;
        if (isGap && mGapLength == 0.0) {
            mGapSeconds = mLast;
            mGapLength = step;
        }
        if (!isGap && step > 0.0) {
            mStep = step;
        }
        mLast = now;
        mHasLast = true;
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
