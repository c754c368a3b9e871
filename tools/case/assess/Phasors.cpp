#include "assess/Phasors.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "assess/QuantityNames.h"
#include "base/Numbers.h"

namespace assess {

namespace {
using Phasor = std::complex<double>;

Phasor phasorOf(double magnitude, double degrees)
{
    const double radians = degrees * base::kRadiansPerDegree;
    return {magnitude * std::cos(radians), magnitude * std::sin(radians)};
}

/** In percent. If 0 is expected, any other measured value has 100 %. */
double vectorError(const Phasor& expected, const Phasor& measured)
{
    constexpr double kPercent = 100.0;
    const double size = std::abs(expected);
    const double error = std::abs(measured - expected);
    return size > 0.0 ? kPercent * error / size : (error > 0.0 ? kPercent : 0.0);
}

/** The vector errors of the frames that have both a magnitude and an angle. */
Matching joinPairs(Matching magnitudes, const Matching& angles)
{
    const std::vector<Pair> pairs = std::move(magnitudes.mPairs);
    magnitudes.mPairs.clear();
    auto angle = angles.mPairs.begin();
    for (const Pair& magnitude : pairs) {
        while (angle != angles.mPairs.end() && angle->mUtcNs < magnitude.mUtcNs) {
            ++angle;
        }
        if (angle != angles.mPairs.end() && angle->mUtcNs == magnitude.mUtcNs) {
            const Phasor expected = phasorOf(magnitude.mExpected, angle->mExpected);
            const Phasor measured = phasorOf(magnitude.mMeasured, angle->mMeasured);
            magnitudes.mPairs.push_back({magnitude.mUtcNs, 0.0, vectorError(expected, measured)});
        }
    }
    magnitudes.mCounts.mMissing = magnitudes.mCounts.mExpected - magnitudes.mPairs.size();
    return magnitudes;
}
} // namespace

Series partOf(const Series& measured, const Series& expected)
{
    if (expected.mSamples.empty()) {
        return {};
    }
    const qint64 marginNs = spacingOf(expected.mSamples) / 2;
    const auto isEarlier = [](const Sample& sample, qint64 ns) { return sample.mUtcNs < ns; };
    const auto& all = measured.mSamples;
    const auto begin = std::lower_bound(all.begin(), all.end(),
                                        expected.mSamples.front().mUtcNs - marginNs, isEarlier);
    const auto end = std::lower_bound(begin, all.end(),
                                      expected.mSamples.back().mUtcNs + marginNs + 1, isEarlier);
    return {{begin, end}, 0};
}

void addVectorErrors(const ValueTable& expected, const ValueTable& measured, qint64 toleranceNs,
                     bool isPart, ComputedSeries& computed)
{
    const std::pair<const char*, const char*> kNames[] = {{kMagnitude, kAngle},
                                                          {kPositiveMagnitude, kPositiveAngle}};
    const auto match = [&](const SeriesKey& key) {
        const Series* const wanted = expected.find(key);
        const Series* const found = measured.find(key);
        return matchInTime(*wanted,
                           found == nullptr ? Series()
                           : isPart         ? partOf(*found, *wanted)
                                            : *found,
                           toleranceNs);
    };
    for (const auto& [key, series] : expected.all()) {
        for (const auto& [magnitude, angle] : kNames) {
            const SeriesKey angles{angle, key.mChannel};
            if (key.mQuantity == magnitude && expected.find(angles) != nullptr) {
                computed[{kTve, key.mChannel}] = joinPairs(match(key), match(angles));
            }
        }
    }
}

} // namespace assess
