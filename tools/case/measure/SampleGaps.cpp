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
        if (mStep > 0.0 && step > kMinGapSeconds && step > kMinGapSteps * mStep) {
            mFirstSeconds = mCount == 0 ? mLast : mFirstSeconds;
            mFirstLength = mCount == 0 ? step : mFirstLength;
            ++mCount;
        } else if (step > 0.0) {
            mStep = step;
        }
        mLast = now;
        mHasLast = true;
    }
}

std::string SampleGaps::remark() const
{
    return mCount == 0 ? ""
                       : fmt::format(
                             "samples are missing, {} times, the first for {:.6f} s after "
                             "{:.6f} s: values of that time are not true",
                             mCount, mFirstLength, mFirstSeconds);
}

} // namespace measure
