#pragma once

#include "base/ResultFile.h"
#include "generate/ReferenceValues.h"
#include "generate/SignalTable.h"

namespace generate {

/**
 * Writes the components of a wave and the values measured in its samples as one JSON object, with
 * the signal's name and flicker. The caller commits the file.
 *
 * @param signal has no name if the wave was described by options alone
 */
void writeTruth(const Signal& signal, const ReferenceValues& values, const MeasuredValues& measured,
                base::ResultFile& output);

} // namespace generate
