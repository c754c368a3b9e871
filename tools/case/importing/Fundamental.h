#pragma once

#include <optional>
#include <string>
#include <vector>

#include "importing/ChannelMap.h"
#include "importing/RecordedSignal.h"
#include "resampling/PhaseTrack.h"

namespace importing {

/** The fundamental of a recording. */
struct Fundamental
{
    double mNominalHz = 50.0;
    std::optional<resampling::PhaseTrack> mTrack; ///< no value if it cannot be followed
    std::string mReasonNotTracked;
    std::vector<std::string> mRemarks;
};

/** Whether the recording states a nominal frequency that a power system may have. */
bool isNominalKnown(const waveform::SignalDescription& description);

/**
 * Follows the positive sequence of the mapped voltages, or else of the currents. A recording of
 * fewer than six periods is not followed. The nominal frequency is the recording's; if it states
 * none, 50, 60 or 16.7 Hz, whichever is strongest.
 */
Fundamental findFundamental(const waveform::SignalDescription& description,
                            const RecordedSignal& recorded, const resampling::SampleTimes& times,
                            const ChannelMap& map);

} // namespace importing
