#pragma once

#include <string>
#include <vector>

#include "importing/Importer.h"
#include "importing/TimeCheck.h"
#include "waveform/SignalSource.h"

namespace importing {

/** Which status channels change in a range, and when: they are not played. A few lines at most. */
std::vector<std::string> remarksOnStatus(const waveform::SignalDescription& description,
                                         const TimeRange& range);

/** Which peaks written differ from those recorded; empty where none does. */
std::vector<std::string> remarksOnPeaks(const ImportReport& report);

} // namespace importing
