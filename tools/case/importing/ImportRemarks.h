#pragma once

#include <string>
#include <vector>

#include "importing/Importer.h"
#include "importing/TimeCheck.h"
#include "waveform/SignalSource.h"

namespace importing {

/** Names the status channels that change in a range, which are not played. A few lines at most. */
std::vector<std::string> remarksOnStatus(const waveform::SignalDescription& description,
                                         const TimeRange& range);

/** Names the written peaks that differ from the recorded ones; empty if none does. */
std::vector<std::string> remarksOnPeaks(const ImportReport& report);

} // namespace importing
