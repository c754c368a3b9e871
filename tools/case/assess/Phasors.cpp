#include "assess/Phasors.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>

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

/** A frame is wrong if its magnitude or its angle is. */
void joinCounts(MatchCounts& counts, const MatchCounts& angles)
{
    for (const auto count : {&MatchCounts::mAdditional, &MatchCounts::mInGaps, &MatchCounts::mLate,
                             &MatchCounts::mEarly, &MatchCounts::mDoubled}) {
        counts.*count = std::max(counts.*count, angles.*count);
    }
}

/**
 * The vector errors of the frames that have both a magnitude and an angle.
 * @param expectedAngles an interruption has none: the magnitude is enough there
 */
Matching joinPairs(Matching magnitudes, const Matching& angles,
                   const std::vector<Sample>& expectedAngles)
{
    const std::vector<Pair> pairs = std::move(magnitudes.mPairs);
    magnitudes.mPairs.clear();
    auto angle = angles.mPairs.begin();
    const auto isEarlier = [](const Sample& a, const Sample& b) { return a.mUtcNs < b.mUtcNs; };
    for (const Pair& magnitude : pairs) {
        while (angle != angles.mPairs.end() && angle->mUtcNs < magnitude.mUtcNs) {
            ++angle;
        }
        if (angle != angles.mPairs.end() && angle->mUtcNs == magnitude.mUtcNs) {
            const Phasor expected = phasorOf(magnitude.mExpected, angle->mExpected);
            const Phasor measured = phasorOf(magnitude.mMeasured, angle->mMeasured);
            magnitudes.mPairs.push_back({magnitude.mUtcNs, 0.0, vectorError(expected, measured)});
        } else if (std::binary_search(expectedAngles.begin(), expectedAngles.end(),
                                      Sample{magnitude.mUtcNs, 0.0}, isEarlier)) {
            ++magnitudes.mCounts.mMissing;
        }
    }
    joinCounts(magnitudes.mCounts, angles.mCounts);
    if (std::abs(angles.mDistanceNs) > std::abs(magnitudes.mDistanceNs)) {
        magnitudes.mDistanceNs = angles.mDistanceNs;
    }
    return magnitudes;
}
} // namespace

Series partOf(const Series& measured, const Series& expected, qint64 toleranceNs)
{
    if (expected.mSamples.empty()) {
        return {};
    }
    const qint64 spacingNs = spacingOf(expected.mSamples);
    const qint64 marginNs = spacingNs > 0 ? spacingNs / 2 : toleranceNs;
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
    const auto reference = expected.range();
    const auto match = [&](const SeriesKey& key) {
        const Series* const wanted = expected.find(key);
        const Series* const found = measured.find(key);
        return matchInTime(*wanted,
                           found == nullptr ? Series()
                           : isPart         ? partOf(*found, *wanted, toleranceNs)
                                            : *found,
                           toleranceNs, reference);
    };
    for (const auto& [key, series] : expected.all()) {
        for (const auto& [magnitude, angle] : kNames) {
            const SeriesKey angles{angle, key.mChannel};
            const Series* const expectedAngles = expected.find(angles);
            if (key.mQuantity == magnitude && expectedAngles != nullptr) {
                computed[{kTve, key.mChannel}] =
                    joinPairs(match(key), match(angles), expectedAngles->mSamples);
            }
        }
    }
}

} // namespace assess
