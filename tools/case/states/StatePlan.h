#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "generate/Neutral.h"
#include "states/Location.h"

namespace states {

/** A decaying DC offset of a current. */
struct Offset
{
    std::optional<double> mValue; ///< at its start; none: makes the current continuous
    double mTau;                  ///< seconds
};

/** The fundamental of a channel; in volts or amperes. */
struct ChannelWave
{
    double mRms = 0.0;
    double mDegrees = 0.0; ///< lead over the reference: one degree per line, 0 at the first line
    std::optional<Offset> mOffset;
    size_t mSince = 0;  ///< the state that names the channel
    Location mLocation; ///< of that
};

/** ratio * sin(order * x + degrees), x the phase of the channel's fundamental. */
struct StateHarmonic
{
    int mOrder;
    double mRatio;
    double mDegrees;
};

/** sin(2 pi hertz t), t from the start of its state, modulates voltages and currents. */
struct Swing
{
    double mHertz;
    double mVoltage; ///< the amplitude is multiplied by 1 + mVoltage * sin
    double mCurrent; ///< likewise
    double mDegrees; ///< the currents are advanced by mDegrees * sin
    size_t mSince;
};

/** The magnetizing current of a transformer that is energized when the state begins. */
struct Inrush
{
    double mPeak; ///< amperes, for a phase that is energized at 0 degrees without remanence
    double mTau;  ///< seconds
    double mKnee; ///< flux at which the core saturates, per unit of its rated peak
    std::array<double, generate::kPhaseCount> mRemanence; ///< per unit of the rated peak flux
    size_t mSince;
};

/** A current transformer that saturates. */
struct Saturation
{
    double mKnee;      ///< volts, rms at the initial frequency of the file
    double mBurden;    ///< ohms, including the winding
    double mRemanence; ///< per unit of the flux at the knee, in all three phases
    size_t mSince;
};

/** A change of the frequency from the start of the state. */
struct FrequencyTarget
{
    double mHertz;
    double mRate; ///< Hz/s; 0: a step
    Location mLocation;
};

/** Start of a state at an angle of a phase voltage. */
struct PointOnWave
{
    size_t mChannel;
    double mDegrees;
};

/** A complete state: what the file does not name is copied from the previous state. */
struct State
{
    std::string mName;
    Location mLocation;
    std::optional<double> mPeriods; ///< one of the two
    std::optional<double> mSeconds;
    Location mDuration; ///< in the file
    std::optional<PointOnWave> mAt;
    std::array<ChannelWave, kChannelCount> mChannels;
    std::vector<StateHarmonic> mVoltageHarmonics;
    std::vector<StateHarmonic> mCurrentHarmonics;
    std::optional<Swing> mSwing;
    std::optional<Inrush> mInrush;
    std::optional<Saturation> mSaturation;
    std::optional<FrequencyTarget> mFrequency; ///< if the state names one
};

/** A file of states. */
struct StatePlan
{
    std::string mFileName;
    double mHertz = 50.0;
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
    generate::Neutral mNeutral{generate::NeutralRule::Sum, generate::NeutralRule::Zero};
    std::vector<State> mStates; ///< at least one

    /** The beginning of each message. */
    std::string messagePrefix(const Location& location) const
    {
        return states::messagePrefix(mFileName, location);
    }
};

/** Whether the channel is a current; otherwise it is a voltage. */
inline bool isCurrent(size_t channel)
{
    return channel >= generate::kFirstCurrent;
}

/** Range of the frequency of a state, in Hz. */
inline constexpr double kMinHertz = 1.0;
inline constexpr double kMaxHertz = 1000.0;

} // namespace states
