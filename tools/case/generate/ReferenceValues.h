#pragma once

#include <QtGlobal>
#include <array>
#include <complex>
#include <optional>
#include <vector>

#include "generate/SampleMeter.h"
#include "generate/WaveParameters.h"

namespace generate {

/** The frequency from a line on. */
struct FrequencyStep
{
    Position mPosition;
    float mFileHertz;
    double mHertz; ///< of the time stamps
};

struct FrequencyValues
{
    float mFileHertz = 0.0F; ///< if it is constant, as the next one
    double mHertz = 0.0;     ///< of the time stamps
    double mMinHertz;
    double mMaxHertz;
    std::optional<double> mMaxHertzPerSecond; ///< none if the frequency jumps
    std::vector<FrequencyStep> mSteps;        ///< empty if it is constant
};

struct HarmonicValues
{
    int mOrder;
    double mRms;
    std::optional<double> mPercent; ///< of the channel's fundamental, if there is one
    std::optional<double> mDegrees; ///< where the channel's fundamental rises through 0
    double mFirstLineDegrees;
};

/** Values of the wave without disturbances, modulations and tones. */
struct ChannelValues
{
    double mFundamentalRms;
    double mFundamentalDegrees;             ///< of a sine, at the first line
    std::optional<double> mThdPercent;      ///< none without a fundamental
    std::vector<HarmonicValues> mHarmonics; ///< by their order
};

/** In percent of the positive sequence of the voltages. */
struct UnbalanceValues
{
    double mNegativePercent;
    double mZeroPercent;
};

struct DisturbanceValues
{
    ChannelSet mChannels;
    Position mBegin;
    Position mEnd;  ///< the first line after it
    double mFactor; ///< remaining part of the amplitude
    double mPhaseJumpDegrees;
};

struct ToneValues
{
    ChannelSet mChannels;
    Position mBegin;
    double mHertz;
    double mPercent;
    double mDegrees;
    std::optional<double> mTimeConstantSeconds; ///< none if it does not decay
};

struct ModulationValues
{
    ChannelSet mChannels;
    ModulationShape mShape;
    double mHertz;
    double mAmplitudePercent;
    double mPhaseRadians;
};

/** The components of a wave, with the times at which it is played. In counts. */
struct ReferenceValues
{
    Position mEnd; ///< the line after the last one
    FrequencyValues mFrequency;
    std::array<ChannelValues, kChannelCount> mChannels;
    bool mHasHarmonics; ///< false where rectangular modulation shows among them
    std::optional<UnbalanceValues> mUnbalance; ///< none without a positive sequence
    std::vector<DisturbanceValues> mDisturbances;
    std::vector<ToneValues> mTones;
    std::vector<ModulationValues> mModulations;
};

/**
 * Computes the values from the description; what the written samples hold is measured by
 * SampleMeter.
 *
 * Requires: problemOf(parameters) is empty.
 */
ReferenceValues referenceValuesOf(const WaveParameters& parameters);

/** Whether a phasor, in counts, is only a rounding error of phasors that cancel each other. */
bool isNegligible(std::complex<double> phasor);

/** Above -180 up to 180, rounded; 0 for a negligible phasor. */
double degreesOf(std::complex<double> phasor);

/** Measures such a wave: the declared voltage is that of the first channel. */
SampleMeter sampleMeterFor(const ReferenceValues& values);

} // namespace generate
