#pragma once

#include <array>

#include "SampleRecord.h"
#include "waveform/SignalSource.h"

namespace waveform {

/** Names of the device's channels: the phase and neutral voltages, then the currents. */
inline constexpr std::array<const char*, kChannelCount> kDeviceChannelNames{"UA", "UB", "UC", "UN",
                                                                            "IA", "IB", "IC", "IN"};

inline constexpr bool isDeviceVoltage(int channel)
{
    return channel < kChannelCount / 2;
}

/** The channels of the device in value files and recordings: numbers, in counts. */
inline std::vector<ChannelDescription> deviceChannels()
{
    std::vector<ChannelDescription> channels(kChannelCount);
    for (int i = 0; i < kChannelCount; ++i) {
        channels[static_cast<size_t>(i)].mNumber = i;
        channels[static_cast<size_t>(i)].mName = std::to_string(i);
    }
    return channels;
}

/** Puts the values of a sample set into a block that has this sample. */
inline void putValues(const qint32 (&values)[kChannelCount], size_t sample, SignalBlock* block)
{
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        block->mValues[channel][sample] = values[channel];
    }
}

} // namespace waveform
