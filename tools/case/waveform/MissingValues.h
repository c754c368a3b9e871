#pragma once

#include <vector>

#include "base/Remarks.h"
#include "waveform/SignalSource.h"

namespace waveform {

/** A remark for each channel with missing values: how many, and when the first was missing. */
void remarkOnMissing(const std::vector<ChannelDescription>& channels, base::Remarks* remarks);

} // namespace waveform
