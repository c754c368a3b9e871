#include "resampling/PhaseMeter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Numbers.h"
#include "base/RaisedCosine.h"

namespace resampling {

namespace {
/** Four samples per period: with three, the second harmonic looks like the fundamental. */
constexpr long kMinSamples = 4L * PhaseMeter::kWindowPeriods;

/** Rounding of times at the ends of the signal, in s. */
constexpr double kRoundingOfTimes = 1e-9;
} // namespace

ComplexSignal positiveSequence(const std::vector<const std::vector<double>*>& phases)
{
    ComplexSignal sum;
    for (size_t phase = 0; phase < phases.size(); ++phase) {
        if (phases[phase] == nullptr) {
            continue;
        }
        const std::vector<double>& column = *phases[phase];
        const auto turn = std::polar(2.0 / 3.0, base::kTwoPi / 3.0 * static_cast<double>(phase));
        sum.resize(column.size());
        for (size_t i = 0; i < column.size(); ++i) {
            sum[i] += turn * column[i];
        }
    }
    return sum;
}

PhaseMeter::PhaseMeter(const SampleTimes& times, ComplexSignal signal) : mSignal(std::move(signal))
{
    mSeconds.reserve(mSignal.size());
    for (const SampleTimes::Segment& segment : times.segments()) {
        for (size_t i = mSeconds.size(); i <= segment.mLast; ++i) {
            mSeconds.push_back(segment.timeOf(i));
        }
    }
    for (const std::complex<double>& value : mSignal) {
        mRms += std::norm(value);
    }
    mRms = std::sqrt(mRms / static_cast<double>(mSignal.size()));
}

std::optional<PhaseMeter::Phasor> PhaseMeter::measure(double seconds, double hz) const
{
    const double half = kWindowPeriods / std::abs(hz) / 2.0;
    if (seconds - half < begin() - kRoundingOfTimes || seconds + half > end() + kRoundingOfTimes) {
        return {};
    }
    const auto first = std::lower_bound(mSeconds.begin(), mSeconds.end(), seconds - half);
    const auto last = std::upper_bound(first, mSeconds.end(), seconds + half);
    if (last - first < kMinSamples) {
        return {};
    }
    std::complex<double> sum;
    double weights = 0.0;
    for (auto i = static_cast<size_t>(first - mSeconds.begin());
         i < static_cast<size_t>(last - mSeconds.begin()); ++i) {
        const double offset = mSeconds[i] - seconds;
        const double weight = spanOf(i) * base::raisedCosine(offset / half);
        sum += mSignal[i] * std::polar(weight, -base::kTwoPi * hz * offset);
        weights += weight;
    }
    return Phasor{std::abs(sum) / weights, std::arg(sum) / base::kTwoPi};
}

/** The time that a sample stands for, in s. */
double PhaseMeter::spanOf(size_t sample) const
{
    const size_t before = sample > 0 ? sample - 1 : 0;
    const size_t after = std::min(sample + 1, mSeconds.size() - 1);
    return (mSeconds[after] - mSeconds[before]) / static_cast<double>(after - before);
}

} // namespace resampling
