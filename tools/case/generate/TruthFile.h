#pragma once

#include "base/ResultFile.h"
#include "generate/SignalTable.h"

namespace generate {

/**
 * Writes what a perfect instrument measures while a wave is played, as one JSON object, with the
 * signal's name and flicker. The caller commits the file.
 *
 * @param signal may have no name: then the wave was described by options alone
 */
void writeTruth(const Signal& signal, const WaveParameters& wave, base::ResultFile& output);

} // namespace generate
