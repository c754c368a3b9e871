#pragma once

#include <QtGlobal>
#include <array>
#include <optional>
#include <vector>

#include "generate/WaveParameters.h"

namespace generate {

/** A line of the value file and when it is played. */
struct Position
{
    qint64 mLine;    ///< a recording of the stream carries it in the auxiliary word
    double mSeconds; ///< of the time stamps, from that of the first sample
};

/** The frequency from a line on. */
struct FrequencyStep
{
    Position mPosition;
    float mFileHertz;
    double mHertz; ///< of the time stamps
};

struct FrequencyValues
{
    float mFileHertz = 0.0F; ///< where it is constant, as the next one
    double mHertz = 0.0;     ///< of the time stamps
    double mMinHertz;
    double mMaxHertz;
    std::optional<double> mMaxHertzPerSecond; ///< none where the frequency jumps
    std::vector<FrequencyStep> mSteps;        ///< empty where it is constant
};

/** An extreme of the rms of one period. */
struct RmsExtreme
{
    double mRms;
    Position mPosition; ///< first line of the first such period
};

struct HarmonicValues
{
    int mOrder;
    double mPercent; ///< of the channel's fundamental
    double mDegrees; ///< where the channel's fundamental rises through 0
};

/** Of the wave as it is outside events, apart from the extremes. */
struct ChannelValues
{
    double mFundamentalRms;
    double mFundamentalDegrees;             ///< of a sine, at the first line
    std::optional<RmsExtreme> mMinRms;      ///< none in a file that is too short
    std::optional<RmsExtreme> mMaxRms;      ///< likewise
    double mThdPercent;                     ///< unless harmonics are left out, as the next one
    std::vector<HarmonicValues> mHarmonics; ///< in the order in which they were asked for
};

/** In percent of the positive sequence of the voltages. */
struct UnbalanceValues
{
    double mNegativePercent;
    double mZeroPercent;
};

enum class EventKind
{
    Dip,
    Swell,
    PhaseJump,
    Step ///< lasts to the end
};

struct EventValues
{
    EventKind mKind;
    ChannelSet mChannels;
    Position mBegin;
    Position mEnd;  ///< the first line behind it
    double mFactor; ///< what remains of the amplitude
    double mPhaseJumpDegrees;
};

struct ToneValues
{
    ChannelSet mChannels;
    Position mBegin;
    double mHertz;
    double mPercent;
    double mDegrees;
    std::optional<double> mTimeConstantSeconds; ///< none where it lasts
};

struct ModulationValues
{
    ChannelSet mChannels;
    ModulationShape mShape;
    double mHertz;
    double mAmplitudePercent;
    double mPhaseRadians;
};

/**
 * What a perfect instrument measures while a wave is played once. Values are in the unit of the
 * channels' samples.
 */
struct ReferenceValues
{
    Position mEnd; ///< the line behind the last one
    FrequencyValues mFrequency;
    std::array<ChannelValues, kChannelCount> mChannels;
    bool mHasHarmonics; ///< false where rectangular modulation shows among them
    std::optional<UnbalanceValues> mUnbalance; ///< none without a positive sequence
    std::vector<EventValues> mEvents;
    std::vector<ToneValues> mTones;
    std::vector<ModulationValues> mModulations;
};

/**
 * Computes the values from the description and in closed form, never from the samples.
 *
 * Requires: problemOf(parameters) is empty.
 */
ReferenceValues referenceValuesOf(const WaveParameters& parameters);

} // namespace generate
