#pragma once

#include <array>
#include <optional>
#include <vector>

#include "SampleRecord.h"
#include "signal/SignalSource.h"

/** Which channel of a source, counted from 0, belongs to which channel of the device. */
using GuessedChannels = std::array<std::optional<size_t>, kChannelCount>;

/**
 * Maps by unit and phase: voltages to 0-3, currents to 4-7, each A, B, C, neutral. Where a
 * recording has several objects (lines, transformers, ...) it takes the first complete set of
 * three phases, else the fullest.
 */
GuessedChannels guessChannels(const std::vector<ChannelDescription>& channels);
