#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "channels/ChannelPhase.h"
#include "waveform/SignalSource.h"

namespace channels {

/** The channels of a source, counted from 0, that are A, B, C and neutral of one quantity. */
struct GuessedSet
{
    std::array<std::optional<size_t>, kPhaseCount + 1> mSources;
    bool mIsMixed = false; ///< names or components belong to several objects
    std::string mObject;   ///< by components, or else names; empty if unknown
};

/** The voltages and the currents. */
using GuessedSets = std::array<GuessedSet, 2>;

/**
 * Maps by unit and phase. If a recording has several objects (lines, transformers, ...), it takes
 * the first complete set of three phases, or else the first complete one regardless of names and
 * components, or else the fullest.
 */
GuessedSets guessChannels(const std::vector<waveform::ChannelDescription>& channels);

} // namespace channels
