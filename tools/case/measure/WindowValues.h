#pragma once

#include <array>
#include <complex>
#include <cstddef>

#include "SampleRecord.h"

namespace measure {

inline constexpr size_t kLastOrder = 50;
inline constexpr size_t kPhases = 3;

/** Squares of the rms values of one channel. */
struct ChannelSquares
{
    double mRms = 0.0;
    std::array<double, kLastOrder + 1> mHarmonics{};  ///< subgroups by their order, from 1
    std::array<double, kLastOrder> mInterharmonics{}; ///< centred subgroups, from 1
};

/** Squares of the sequences (rms) of the fundamentals of three phases. */
struct SequenceSquares
{
    double mPositive = 0.0;
    double mNegative = 0.0;
    double mZero = 0.0;
};

struct PhasePower
{
    double mActive = 0.0;
    double mReactive = 0.0; ///< of the fundamental; positive if the current lags
    double mApparent = 0.0;
};

/** The values of a window of 10/12 periods. */
struct WindowValues
{
    std::array<ChannelSquares, kChannelCount> mChannels;
    std::array<SequenceSquares, 2> mSequences; ///< of the voltages and of the currents
    std::array<PhasePower, kPhases> mPower;
};

} // namespace measure
