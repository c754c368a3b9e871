#pragma once

#include <functional>
#include <string>
#include <vector>

#include "channels/ChannelPhase.h"
#include "importing/ChannelMap.h"
#include "waveform/SignalSource.h"

namespace importing {

/** "voltage A", "neutral current", ... of a channel of the device, from 0. */
const char* nameOfDeviceChannel(size_t index);

/**
 * The channels of a recording that a map does not use, although they may be those that it lacks.
 * Borrows its arguments.
 */
class LeftOutChannels
{
public:
    LeftOutChannels(const std::vector<waveform::ChannelDescription>& channels,
                    const ChannelMap& map, const Assignments& assignments);

    /** Whether a channel of the device is 0 although that was not requested. */
    bool isMissing(size_t index) const;

    /** Their names, and why each was not used for a channel of the device; empty for none. */
    std::string candidatesFor(size_t index) const;

    /**
     * Channels with the phase and quantity of a used one that are not candidates for a missing one;
     * empty for none.
     */
    std::string skippedChannels() const;

private:
    using Reasons = std::function<std::string(size_t source)>;

    std::string list(const Reasons& reasonOf) const;
    std::string reasonSkipped(size_t source) const;
    bool isUsed(size_t source) const;
    std::string reasonAgainst(size_t source, size_t index) const;

    const std::vector<waveform::ChannelDescription>& mChannels;
    const ChannelMap& mMap;
    const Assignments& mAssignments;
    std::vector<channels::PhaseInSet> mPhases;
};

} // namespace importing
