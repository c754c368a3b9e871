#pragma once

#include <QtGlobal>
#include <array>
#include <bitset>
#include <string>
#include <vector>

#include "SampleRecord.h"

/** Channels a harmonic or a disturbance applies to. */
using ChannelSet = std::bitset<kChannelCount>;

/** The fundamental wave of one channel. */
struct WaveChannel
{
    double mAmplitude; ///< peak value, in the unit of the channel's samples
    double mPhase;     ///< degrees at the first sample
};

/**
 * A multiple of the fundamental, added to it. With x for the phase of the channel's fundamental
 * it is amplitude * mRatio * sin(mOrder * x + mPhase); so it keeps its place in the channel's
 * wave when the wave is shifted, and forms the sequence that belongs to its order in a
 * three-phase system.
 */
struct Harmonic
{
    int mOrder;           ///< 2 or more; at most kMaximumOrder
    double mRatio;        ///< amplitude relative to the channel's fundamental
    double mPhase;        ///< degrees of the harmonic where the fundamental is at 0 degrees
    ChannelSet mChannels; ///< channels that carry it
};

/** For some time a channel's whole wave, harmonics included, is scaled and shifted. */
struct Disturbance
{
    double mStart;        ///< seconds from the first sample
    double mDuration;     ///< seconds
    double mFactor;       ///< amplitude factor, 0 or more
    double mPhaseJump;    ///< degrees
    ChannelSet mChannels; ///< channels it applies to
};

/** Highest harmonic that a period of 360 samples can hold. */
inline constexpr int kMaximumOrder = kSamplesPerPeriod / 2 - 1;

/**
 * What an input value file is made from. The default is a second of a three-phase system of
 * 230 V and 5 A at 50 Hz, voltages in millivolts and currents in milliamperes.
 */
struct WaveParameters
{
    float mFrequency = 50.0F; ///< Hz; single precision, as the simulator reads it
    double mDuration = 1.0;   ///< seconds; rounded to whole periods

    std::array<WaveChannel, kChannelCount> mChannels{{{325269.0, 0.0},
                                                      {325269.0, -120.0},
                                                      {325269.0, 120.0},
                                                      {0.0, 0.0},
                                                      {7071.0, -30.0},
                                                      {7071.0, -150.0},
                                                      {7071.0, 90.0},
                                                      {0.0, 0.0}}};

    std::vector<Harmonic> mHarmonics;
    std::vector<Disturbance> mDisturbances; ///< where several overlap, all of them apply

    /** Duration in whole periods of the signal, to the nearest. */
    qint64 periodCount() const;
};

/**
 * Tells what in the parameters cannot be played or written: one line with the value and what
 * was expected, or an empty string when all is well.
 *
 * Checked are the frequency (the simulator's step between samples must be at least 1 ns and less
 * than 1 s), the duration, the order of the harmonics, the place of the disturbances in the
 * duration, and that no channel value can leave the range of 32 bits.
 */
std::string problemOf(const WaveParameters& parameters);
