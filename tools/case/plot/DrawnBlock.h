#pragma once

#include "plot/DrawnChannels.h"

namespace plot {

/**
 * Samples as they are drawn: a column of values for each drawn channel, in the unit of its group,
 * at times that are `shift` seconds later than the signal's own.
 */
waveform::SignalBlock drawnBlock(const waveform::SignalBlock& whole, const DrawnChannels& channels,
                                 double shift);

} // namespace plot
