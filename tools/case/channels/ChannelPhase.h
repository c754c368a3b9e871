#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "waveform/SignalSource.h"

namespace channels {

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
    std::string mStem;  ///< in capitals
    std::string mLabel; ///< of the phase: "A", "L1", "RD", ...
};

/**
 * The phase that a text ends with: A/B/C, R/S/T, R/Y/B (RD/YE/BU), L1/L2/L3, 1/2/3, also with the
 * neutral named as the other side (UAN, L1-E); N, 4, 3I0, 3U0 and their like are the neutral. A "B"
 * is phase B here, as text alone does not tell R/Y/B.
 */
PhaseEnding phaseAtEndOf(std::string_view text);

/** By the name where it says a voltage between phases, else by the phase field, else by the end of
 * the name; "B" as for phaseAtEndOf(). */
ChannelPhase phaseOf(const waveform::ChannelDescription& channel);

/** What a channel is among the others of its recording. */
struct PhaseInSet
{
    ChannelPhase mPhase;
    std::string mStem; ///< of a name that ends with its phase A, B or C; else empty
};

/** Of all channels of a recording: a "B" beside R or Y and without A, C, S, T is phase C. */
std::vector<PhaseInSet> phasesOf(const std::vector<waveform::ChannelDescription>& channels);

} // namespace channels
