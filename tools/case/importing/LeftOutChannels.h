#pragma once

#include <string>
#include <vector>

#include "channels/ChannelPhase.h"
#include "importing/ChannelMap.h"
#include "waveform/SignalSource.h"

namespace importing {

/** "voltage A", "neutral current", ... of a channel of the device, from 0. */
const char* nameOfDeviceChannel(size_t index);

/**
 * The channels of a recording that a map does not use, although they may be what it lacks. Borrows
 * the recording's channels and the map.
 */
class LeftOutChannels
{
public:
    LeftOutChannels(const std::vector<waveform::ChannelDescription>& channels,
                    const ChannelMap& map);

    /** Their names and why each was not taken for a channel of the device; empty for none. */
    std::string candidatesFor(size_t index) const;

private:
    bool isUsed(size_t source) const;
    std::string reasonAgainst(size_t source, size_t index) const;

    const std::vector<waveform::ChannelDescription>& mChannels;
    const ChannelMap& mMap;
    std::vector<channels::PhaseInSet> mPhases;
};

} // namespace importing
