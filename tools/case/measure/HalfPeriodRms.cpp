#include "measure/HalfPeriodRms.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "base/Sums.h"

namespace measure {

namespace {
constexpr size_t kHalf = kSamplesPerPeriod / 2;

qint64 utcOf(double seconds, qint64 beginUtcNs)
{
    return beginUtcNs + std::llround(seconds * base::kNanosecondsPerSecond);
}

/**
 * Number of samples from the first one to the zero crossing of the fundamental, less than half a
 * period; 0 if the period has no fundamental.
 */
size_t crossingOf(const double* period)
{
    double real = 0.0;
    double imaginary = 0.0;
    for (int i = 0; i < kSamplesPerPeriod; ++i) {
        const double angle = base::kTwoPi * i / kSamplesPerPeriod;
        real += period[i] * std::cos(angle);
        imaginary -= period[i] * std::sin(angle);
    }
    if (real == 0.0 && imaginary == 0.0) {
        return 0;
    }
    // A sine has the angle -90 degrees. An angle that is past the crossing by rounding only is at
    // it.
    constexpr double kRounding = 1e-3;
    const double degrees = std::atan2(imaginary, real) / base::kRadiansPerDegree + 90.0;
    const double past = std::fmod(degrees + 360.0 + kRounding, double{kHalf}) - kRounding;
    return past <= kRounding ? 0 : static_cast<size_t>(std::ceil(kHalf - past - kRounding));
}
} // namespace

std::vector<HalfPeriodValues> HalfPeriodRms::take(const SampleHistory& samples, qint64 beginUtcNs)
{
    std::vector<HalfPeriodValues> values;
    for (size_t channel = 0; channel < mChannels.size(); ++channel) {
        takeChannel(channel, samples, beginUtcNs, &values);
    }
    std::stable_sort(values.begin(), values.end(),
                     [](const auto& a, const auto& b) { return a.mEndUtcNs < b.mEndUtcNs; });
    return values;
}

size_t HalfPeriodRms::needed() const
{
    size_t first = mChannels[0].mNext;
    for (const ChannelState& state : mChannels) {
        first = std::min(first, state.mNext);
    }
    return std::max(first, kHalf) - kHalf;
}

void HalfPeriodRms::takeChannel(size_t channel, const SampleHistory& samples, qint64 beginUtcNs,
                                std::vector<HalfPeriodValues>* values)
{
    ChannelState& state = mChannels[channel];
    if (!state.mHasBegun) {
        if (samples.end() < kSamplesPerPeriod) {
            return;
        }
        state.mHasBegun = true;
        state.mNext = crossingOf(samples.valuesFrom(channel, 0));
    }
    for (; state.mNext + kHalf <= samples.end(); state.mNext += kHalf) {
        const double squares = base::sumOfSquares(samples.valuesFrom(channel, state.mNext), kHalf);
        if (state.mLastSquares) {
            const auto end = static_cast<double>(state.mNext + kHalf);
            values->push_back({utcOf(samples.secondsOf(state.mNext - kHalf), beginUtcNs),
                               utcOf(samples.secondsAt(end), beginUtcNs), deviceChannel(channel),
                               std::sqrt((*state.mLastSquares + squares) / kSamplesPerPeriod)});
        }
        state.mLastSquares = squares;
    }
}

} // namespace measure
