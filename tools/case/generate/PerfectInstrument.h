#pragma once

#include <nlohmann/json.hpp>

#include "generate/WaveParameters.h"

namespace generate {

/**
 * What a perfect instrument measures while a wave is played once: frequency, rms, distortion,
 * unbalance and events, all from the description and in closed form, never from the samples.
 *
 * Times are those of the time stamps, from the first sample's; each stands beside the number of
 * its line, which a recording of the stream carries in the auxiliary word. Values are in the unit
 * of the channels' samples.
 *
 * Requires: problemOf(parameters) is empty.
 */
nlohmann::ordered_json measuredByPerfectInstrument(const WaveParameters& parameters);

} // namespace generate
