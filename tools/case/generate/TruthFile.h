#pragma once

#include "base/ResultFile.h"
#include "generate/ReferenceValues.h"
#include "generate/SignalTable.h"

namespace generate {

/**
 * Writes what a wave is made of and what was measured in its samples, as one JSON object, with the
 * signal's name and flicker. The caller commits the file.
 *
 * @param signal may have no name: then the wave was described by options alone
 */
void writeTruth(const Signal& signal, const ReferenceValues& values, const MeasuredValues& measured,
                base::ResultFile& output);

} // namespace generate
