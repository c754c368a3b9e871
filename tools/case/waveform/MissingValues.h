#pragma once

#include <vector>

#include "base/Remarks.h"
#include "waveform/SignalSource.h"

namespace waveform {

/** A remark for each channel with missing values: their number, and the time of the first. */
void remarkOnMissing(const std::vector<ChannelDescription>& channels, base::Remarks* remarks);

} // namespace waveform
