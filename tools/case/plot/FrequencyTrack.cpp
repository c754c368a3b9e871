#include "plot/FrequencyTrack.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Numbers.h"
#include "base/RaisedCosine.h"
#include "base/Sums.h"

namespace plot {

namespace {
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/**
 * Number of turns of which the median is taken. A phase jump spoils three of them: a window is two
 * periods long, and each turn has two windows that overlap by one period. So four of seven are
 * good.
 */
constexpr size_t kMedianOf = 7;

/**
 * Measuring the phase of a sine needs more than two samples per period; with three, it contains the
 * second harmonic.
 */
constexpr size_t kMinSamples = 4;

/**
 * With a smaller share of the power in the fundamental there is none. Of noise 1/180 is there (with
 * 360 samples), of a sine with a distortion of 100 % half.
 */
constexpr double kMinShare = 0.1;

std::complex<double> product(const std::vector<double>& values,
                             const std::vector<std::complex<double>>& weights)
{
    double real = 0.0;
    double imaginary = 0.0;
    for (size_t i = 0; i < values.size(); ++i) {
        real += values[i] * weights[i].real();
        imaginary += values[i] * weights[i].imag();
    }
    const auto count = static_cast<double>(values.size());
    return {real / count, imaginary / count};
}
} // namespace

bool FrequencyTrack::add(const Period& last, const Period& period, Value* value)
{
    mInRow = last.size() == 0 ? 0 : mInRow + 1;
    const double turn = period.size() < kMinSamples ? kNone : turnInto(last, period);
    // The two windows together cover this period and the two before it.
    const Period& middle = last.size() == 0 ? period : last;
    mValues.push_back({middle.middle(), mInRow < 2 ? kNone : (1.0 + turn) / middle.length()});
    if (mValues.size() < kMedianOf) {
        return false;
    }
    std::vector<double> sorted;
    for (const Value& it : mValues) {
        sorted.push_back(it.mHertz);
    }
    const bool isKnown = std::all_of(sorted.begin(), sorted.end(),
                                     [](double hertz) { return std::isfinite(hertz); });
    std::sort(sorted.begin(), isKnown ? sorted.end() : sorted.begin());
    *value = {mValues[kMedianOf / 2].mSeconds, isKnown ? sorted[kMedianOf / 2] : kNone};
    mValues.pop_front();
    return true;
}

void FrequencyTrack::makeWeights(const std::vector<double>& phases)
{
    if (phases == mPhases) {
        return;
    }
    mPhases = phases;
    mRising.clear();
    mFalling.clear();
    for (const double phase : phases) {
        const base::WindowWeights weights = base::windowWeights(phase);
        mRising.push_back(weights.mRising);
        mFalling.push_back(weights.mFalling);
    }
}

/** @return turns beyond the single turn of the nominal frequency, -0.5 to 0.5 */
double FrequencyTrack::turnInto(const Period& last, const Period& period)
{
    makeWeights(period.mPhases);
    Phasor sum;
    double power = 0.0;
    for (size_t i = 0; i < mLast.size(); ++i) {
        const std::vector<double>& values = period.mValues[i];
        const Phasor window = mLast[i] + product(values, mFalling);
        sum += window * std::conj(mWindow[i]);
        power +=
            base::sumOfSquares(values.data(), values.size()) / static_cast<double>(values.size());
        mWindow[i] = last.size() == 0 ? Phasor() : window;
        mLast[i] = product(values, mRising);
    }
    // A sine of amplitude 1 has the power 1/2 and gives 1/2 in a window.
    return std::abs(sum) < kMinShare * power / 2.0 || power == 0.0 ? kNone
                                                                   : std::arg(sum) / base::kTwoPi;
}

} // namespace plot
