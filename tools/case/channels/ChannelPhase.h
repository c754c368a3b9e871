#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "waveform/SignalSource.h"

namespace channels {

/** Number of phases of a set of voltages or currents, without the neutral. */
inline constexpr size_t kPhaseCount = 3;

/** The phase of a channel. The first four are in the order of the device's channels. */
enum class ChannelPhase
{
    A,
    B,
    C,
    Neutral,
    BetweenPhases,
    Unknown
};

/** A phase, and the text before it. */
struct PhaseEnding
{
    ChannelPhase mPhase = ChannelPhase::Unknown;
    std::string mStem;  ///< in capitals
    std::string mLabel; ///< of the phase: "A", "L1", "RD", ...
};

/**
 * The phase at the end of a text: A/B/C, R/S/T, R/Y/B (RD/YE/BU), L1/L2/L3, 1/2/3, also with the
 * neutral named as the other side (UAN, L1-E); N, 4, 3I0, 3U0 and similar are the neutral. A "B" is
 * phase B here, because text alone does not identify R/Y/B.
 */
PhaseEnding phaseAtEndOf(std::string_view text);

/**
 * By the name if it is a voltage between phases, or else by the phase field, or else by the end of
 * the name; "B" as for phaseAtEndOf().
 */
ChannelPhase phaseOf(const waveform::ChannelDescription& channel);

/** The phase of a channel among the others of its recording. */
struct PhaseInSet
{
    ChannelPhase mPhase;
    std::string mStem; ///< of a name that ends with its phase A, B or C; otherwise empty
};

/**
 * The phases of all channels of a recording: "B" is phase C if there is R or Y, but no A, C, S, T.
 */
std::vector<PhaseInSet> phasesOf(const std::vector<waveform::ChannelDescription>& channels);

} // namespace channels
