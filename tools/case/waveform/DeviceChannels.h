#pragma once

#include "SampleRecord.h"
#include "waveform/SignalSource.h"

namespace waveform {

/** The eight channels of the device, which have a number and no more: 0 to 7, in counts. */
inline std::vector<ChannelDescription> deviceChannels()
{
    std::vector<ChannelDescription> channels(kChannelCount);
    for (int i = 0; i < kChannelCount; ++i) {
        channels[static_cast<size_t>(i)].mNumber = i;
        channels[static_cast<size_t>(i)].mName = std::to_string(i);
    }
    return channels;
}

/** Puts the values of a sample set into the places of a block that has room for them. */
inline void putValues(const qint32 (&values)[kChannelCount], size_t place, SignalBlock* block)
{
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        block->mValues[channel][place] = values[channel];
    }
}

} // namespace waveform
