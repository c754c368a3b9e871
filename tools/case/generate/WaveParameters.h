#pragma once

#include <QtGlobal>
#include <array>
#include <bitset>
#include <limits>
#include <string>
#include <vector>

#include "SampleRecord.h"
#include "generate/Neutral.h"

namespace generate {

/** Percent of a ratio of 1. */
inline constexpr double kPercent = 100.0;

/** Channels that something applies to. */
using ChannelSet = std::bitset<kChannelCount>;

/** The fundamental wave of one channel. */
struct WaveChannel
{
    double mAmplitude; ///< peak value, in the unit of the channel's samples
    double mPhase;     ///< degrees at the first sample

    /** Of a sine with a positive peak value, at the first sample. */
    double degrees() const { return mAmplitude < 0.0 ? mPhase + 180.0 : mPhase; }
};

/**
 * A multiple of the fundamental, added to it. With x for the phase of the channel's fundamental
 * it is amplitude * mRatio * sin(mOrder * x + mPhase); so it moves with the channel's
 * wave when the wave is shifted, and forms the sequence that belongs to its order in a
 * three-phase system.
 */
struct Harmonic
{
    int mOrder;           ///< 2 or more; at most kMaxOrder
    double mRatio;        ///< amplitude relative to the channel's fundamental
    double mPhase;        ///< degrees of the harmonic where the fundamental is at 0 degrees
    ChannelSet mChannels; ///< channels that carry it
};

/** Scales and phase-shifts a channel's whole wave, harmonics included, for some time. */
struct Disturbance
{
    double mStart;        ///< seconds from the first sample
    double mDuration;     ///< seconds
    double mFactor;       ///< amplitude factor, 0 or more
    double mPhaseJump;    ///< degrees
    ChannelSet mChannels; ///< channels it applies to
};

enum class ModulationShape
{
    Sine,     ///< cos(2 pi mHertz t)
    Rectangle ///< 1 and -1 alternately, each for half a cycle
};

/** In radians; no test needs a deeper modulation of the phase. */
inline constexpr double kMaxPhaseDepth = 100.0;

/** Modulates a channel's whole wave, harmonics included, in amplitude, phase or both. */
struct Modulation
{
    double mHertz;
    double mDepth;      ///< the amplitude is multiplied by 1 + mDepth * shape; -1 to 1
    double mPhaseDepth; ///< radians: the phase moves by -mPhaseDepth * shape; up to
                        ///< kMaxPhaseDepth to either side
    ModulationShape mShape;
    ChannelSet mChannels;
};

/** The time constant of a component that does not decay. */
inline constexpr double kLasting = std::numeric_limits<double>::infinity();

/**
 * A component that is added to a wave from some time on: an oscillation, or an offset (0 Hz at 90
 * degrees), decaying or lasting. It is amplitude * mRatio * exp(-t / mTimeConstant) * sin(2 pi
 * mHertz t + mPhase), with t from mStart and the amplitude of the undisturbed channel.
 */
struct Tone
{
    double mStart; ///< seconds from the first sample
    double mHertz;
    double mRatio;
    double mPhase;        ///< degrees at mStart, the same in all channels
    double mTimeConstant; ///< seconds, or kLasting
    ChannelSet mChannels;
};

/** A point of the frequency's course, which changes linearly from one point to the next. */
struct FrequencyPoint
{
    double mSeconds; ///< from the first sample; does not fall
    double mHertz;
};

/** Highest harmonic that a period of 360 samples can hold. */
inline constexpr int kMaxOrder = kSamplesPerPeriod / 2 - 1;

/**
 * What an input value file is made from. The default is a second of a three-phase system of
 * 230 V and 5 A at 50 Hz, voltages in millivolts and currents in milliamperes.
 */
struct WaveParameters
{
    float mFrequency = 50.0F; ///< Hz; single precision, as the simulator reads it
    double mDuration = 1.0;   ///< seconds; rounded to whole periods

    /**
     * The frequency over time, instead of mFrequency: before its first and after its last point it
     * is constant. A period has the frequency of its middle. Empty for a constant frequency, which
     * modulations and tones require.
     */
    std::vector<FrequencyPoint> mCourse;

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
    std::vector<Modulation> mModulations;
    std::vector<Tone> mTones;
    Neutral mNeutral;

    /** Samples in a second. Requires: mCourse is empty. */
    double samplesPerSecond() const { return double(mFrequency) * kSamplesPerPeriod; }
};

/**
 * What in the parameters cannot be played or written: one line with the value and what
 * was expected, or an empty string when all is well.
 *
 * Checked are the frequency (the simulator's step between samples must be at least 1 ns and less
 * than 1 s), the duration, the order of the harmonics, that the disturbances lie within the
 * duration, what a modulation or a tone can be, and that no channel value can leave the range of
 * 32 bits.
 */
std::string problemOf(const WaveParameters& parameters);

/**
 * Remarks on a wave that can be written but does not repeat without a jump: a line for each
 * modulation and lasting tone that does not have whole cycles in the file. Requires:
 * problemOf(parameters) is empty.
 */
std::vector<std::string> seamsOf(const WaveParameters& parameters);

} // namespace generate
