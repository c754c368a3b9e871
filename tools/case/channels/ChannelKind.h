#pragma once

#include <string>
#include <string_view>

#include "waveform/SignalSource.h"

namespace channels {

/** What a channel measures. */
enum class Quantity
{
    Unknown,
    Voltage,
    Current
};

/** The quantity of a channel, and the factor from its unit to V or A. */
struct ChannelUnit
{
    Quantity mQuantity = Quantity::Unknown;
    double mFactor = 1.0;
};

/** "kV", "mV", "volt", "A", "ampere", ...; 'm' is milli and 'M' mega, else case means nothing. */
ChannelUnit unitOf(std::string_view text);

/** The same of a channel; where it has no unit, its name tells by a leading U, V or I. */
ChannelUnit unitOf(const waveform::ChannelDescription& channel);

/** Phases of a set of voltages or currents, beside the neutral. */
inline constexpr size_t kPhaseCount = 3;

/** To which phase a channel belongs. The values of the first four are their order. */
enum class ChannelPhase
{
    A,
    B,
    C,
    Neutral,
    BetweenPhases,
    Unknown
};

/** A phase, and what stands before it in the text. */
struct PhaseEnding
{
    ChannelPhase mPhase = ChannelPhase::Unknown;
    std::string mStem; ///< in capitals
};

/**
 * The phase that a text ends with: A/B/C, R/S/T, L1/L2/L3, 1/2/3, also with the neutral named as
 * the other side (UAN, L1-E); N, 4, 3I0, 3U0 and their like are the neutral.
 */
PhaseEnding phaseAtEndOf(std::string_view text);

/** By the phase field, else by the end of the name. */
ChannelPhase phaseOf(const waveform::ChannelDescription& channel);

} // namespace channels
