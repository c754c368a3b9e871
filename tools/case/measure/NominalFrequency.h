#pragma once

#include <optional>

#include "importing/ChannelMap.h"
#include "waveform/SignalSource.h"

namespace measure {

/**
 * 50 or 60 Hz, whichever is stronger in the first second of a recording that does not say it.
 * Takes the voltages that are mapped, where there are none the currents.
 * @return nothing for fewer than two periods, or without a fundamental
 */
std::optional<double> recognizeNominal(waveform::SignalSource& source,
                                       const importing::ChannelMap& map);

} // namespace measure
