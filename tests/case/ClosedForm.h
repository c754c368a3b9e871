#pragma once

#include <array>
#include <cmath>

/**
 * A three-phase signal known in closed form: a fundamental whose frequency may rise, harmonics up
 * to the 40th, and a sag with a jump of the phase.
 */
struct ClosedForm
{
    static constexpr double kPeak = 1.2e6; ///< counts, and a bound of every value
    static constexpr double kSagFactor = 0.2;
    static constexpr double kSagCycles = 60.0 / 360.0; ///< of the phase, while the sag lasts
    static constexpr double kTwoPi = 6.28318530717958647692;

    double mHz = 50.02;
    double mHzPerSecond = 0.0;
    double mSagBegin = 0.0; ///< s
    double mSagEnd = 0.0;

    bool isInSag(double seconds) const { return seconds >= mSagBegin && seconds < mSagEnd; }

    /** Of the fundamental, in periods, without the jump. */
    double cyclesAt(double seconds) const { return seconds * (mHz + mHzPerSecond * seconds / 2.0); }

    /** @param phase 0 to 2 */
    double valueAt(double seconds, int phase) const
    {
        static constexpr std::array<std::array<double, 2>, 6> kHarmonics = {
            {{1, 1.0}, {2, 0.02}, {5, 0.06}, {7, 0.05}, {25, 0.03}, {40, 0.02}}};
        const bool isSag = isInSag(seconds);
        const double cycles = cyclesAt(seconds) - phase / 3.0 + (isSag ? kSagCycles : 0.0);
        double sum = 0.0;
        for (const auto& [order, ratio] : kHarmonics) {
            sum += ratio * std::cos(kTwoPi * order * cycles);
        }
        return (isSag ? kSagFactor : 1.0) * kPeak / 1.2 * sum;
    }

    /** Whether the time is at least this far from every jump and from both ends. */
    bool isQuiet(double seconds, double length, double distance) const
    {
        const bool hasSag = mSagEnd > mSagBegin;
        return seconds >= distance && seconds <= length - distance &&
               (!hasSag || (std::abs(seconds - mSagBegin) >= distance &&
                            std::abs(seconds - mSagEnd) >= distance));
    }
};
