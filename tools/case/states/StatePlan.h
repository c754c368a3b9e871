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
    std::optional<double> mValue; ///< at its beginning; none: what makes the current continuous
    double mTau;                  ///< seconds
};

/** The fundamental of a channel; in volts or amperes. */
struct ChannelWave
{
    double mRms = 0.0;
    double mDegrees = 0.0; ///< ahead of the reference: one degree a line, 0 at the first line
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

/** sin(2 pi hertz t), t from the beginning of its state, moves voltages and currents. */
struct Swing
{
    double mHertz;
    double mVoltage; ///< the amplitude is multiplied by 1 + mVoltage * sin
    double mCurrent; ///< likewise
    double mDegrees; ///< the currents are ahead by mDegrees * sin
    size_t mSince;
};

/** The magnetizing current of a transformer that is switched on where the state begins. */
struct Inrush
{
    double mPeak; ///< amperes: of a phase that is switched on at 0 degrees without remanence
    double mTau;  ///< seconds
    double mKnee; ///< flux at which the core saturates, per unit of its rated peak
    std::array<double, generate::kPhaseCount> mRemanence; ///< per unit of the rated peak flux
    size_t mSince;
};

/** A current transformer that saturates. */
struct Saturation
{
    double mKnee;      ///< volts, rms at the frequency of the file's beginning
    double mBurden;    ///< ohms, with those of the winding
    double mRemanence; ///< per unit of the flux at the knee, in all three phases
    size_t mSince;
};

/** The frequency goes there from where the state begins. */
struct FrequencyTarget
{
    double mHertz;
    double mRate; ///< Hz/s; 0: at once
    Location mLocation;
};

/** A state begins where a phase voltage has an angle. */
struct PointOnWave
{
    size_t mChannel;
    double mDegrees;
};

/** All of a state: what the file does not name is what the state before it has. */
struct State
{
    std::string mName;
    Location mLocation;
    std::optional<double> mPeriods; ///< one of the two
    std::optional<double> mSeconds;
    Location mDuration; ///< where the file has it
    std::optional<PointOnWave> mAt;
    std::array<ChannelWave, kChannelCount> mChannels;
    std::vector<StateHarmonic> mVoltageHarmonics;
    std::vector<StateHarmonic> mCurrentHarmonics;
    std::optional<Swing> mSwing;
    std::optional<Inrush> mInrush;
    std::optional<Saturation> mSaturation;
    std::optional<FrequencyTarget> mFrequency; ///< where the state names one
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

    /** What begins each message. */
    std::string messagePrefix(const Location& location) const
    {
        return states::messagePrefix(mFileName, location);
    }
};

/** The channels of a voltage or of a current. */
inline bool isCurrent(size_t channel)
{
    return channel >= generate::kFirstCurrent;
}

/** Frequencies that a state can have, in Hz. */
inline constexpr double kMinHertz = 1.0;
inline constexpr double kMaxHertz = 1000.0;

} // namespace states
