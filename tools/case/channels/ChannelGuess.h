#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "channels/ChannelPhase.h"
#include "waveform/SignalSource.h"

namespace channels {

/** Of one quantity: which channel of a source, counted from 0, is A, B, C, neutral. */
struct GuessedSet
{
    std::array<std::optional<size_t>, kPhaseCount + 1> mSources;
    bool mIsMixed = false; ///< names or components speak of several objects
    std::string mObject;   ///< by its components, else its names; empty where they tell none
};

/** The voltages and the currents. */
using GuessedSets = std::array<GuessedSet, 2>;

/**
 * Maps by unit and phase. Where a recording has several objects (lines, transformers, ...) it takes
 * the first complete set of three phases, else the first that is complete whatever its names and
 * components say, else the fullest.
 */
GuessedSets guessChannels(const std::vector<waveform::ChannelDescription>& channels);

} // namespace channels
