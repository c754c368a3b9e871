#pragma once

#include "plot/DrawnChannels.h"

namespace plot {

/**
 * Samples to be drawn: a column of values for each drawn channel, in the unit of its group, at
 * times that are `shift` seconds later than those of the signal.
 */
waveform::SignalBlock drawnBlock(const waveform::SignalBlock& whole, const DrawnChannels& channels,
                                 double shift);

} // namespace plot
