#pragma once

#include <QtGlobal>
#include <array>
#include <complex>
#include <vector>

#include "waveform/SignalSource.h"

namespace measure {

/** The phases whose phasors are measured: three voltages and three currents. */
inline constexpr size_t kPhasorCount = 6;

/**
 * The sum of some consecutive samples, multiplied by the phasor that rotates backwards at the
 * nominal frequency from UTC. Each sample is weighted by the time that it covers.
 */
struct DemodulatedGroup
{
    double mSeconds = 0.0;       ///< of its centre of weight, since the signal began
    double mWeight = 0.0;        ///< s
    double mSpread = 0.0;        ///< s^2: variance of the times
    std::complex<double> mImage; ///< sum of the rotating phasor's square
    std::array<double, 2 * kPhasorCount> mSums{}; ///< real and imaginary part of each phase
};

/**
 * Shifts the fundamental to 0 Hz and averages it, in 64 to 128 groups per nominal period if there
 * are so many samples, so that the next stages cost less. It uses the times of the samples, so the
 * rate may change. A gap of more than a quarter of a period discards everything before it.
 */
class Demodulator
{
public:
    Demodulator(qint64 beginUtcNs, double nominalHz);

    void add(const waveform::SignalBlock& block);

    /** In the order of their times; without gaps. */
    const std::vector<DemodulatedGroup>& groups() const { return mGroups; }

    /** s: time of the first group since the start or the latest gap. Requires: there is one. */
    double coveredFrom() const { return mCoveredFrom; }

    /** Drops the groups before this time. */
    void dropBefore(double seconds);

private:
    struct Sample
    {
        double mSeconds = 0.0;
        std::array<double, kPhasorCount> mValues{};
    };

    void take(const Sample& sample);
    void accumulate(const Sample& sample, double weight);
    void finishGroup();
    void restart();

    double mNominalHz;
    double mFirstCycles; ///< of the nominal phasor at the first sample: 0 to 1
    bool mHasLast = false;
    Sample mLast;           ///< its weight depends on the next one
    double mLastStep = 0.0; ///< s, that led to it

    DemodulatedGroup mOpen;
    double mOpenFirst = 0.0; ///< s: of its first sample
    double mMoment = 0.0;    ///< of the weights, from there
    double mSquareMoment = 0.0;
    size_t mCount = 0;
    size_t mGroupSize = 1;
    std::vector<DemodulatedGroup> mGroups;
    bool mIsCovered = false; ///< there was a group since the latest gap
    double mCoveredFrom = 0.0;
};

} // namespace measure
