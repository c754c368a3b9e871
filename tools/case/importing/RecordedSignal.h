#pragma once

#include <vector>

#include "importing/ChannelMap.h"
#include "resampling/Interpolator.h"
#include "resampling/SampleTimes.h"
#include "waveform/SignalSource.h"

namespace importing {

/**
 * The part of a source that an import needs, in memory: the times and the mapped channels. Takes 8
 * bytes per sample and channel.
 */
struct RecordedSignal
{
    std::vector<double> mSeconds;
    std::vector<resampling::SourceColumn> mColumns; ///< in the order of mSources
    std::vector<size_t> mSources; ///< channels of the source, from 0, in ascending order

    size_t columnOf(size_t source) const;

    /** The sum for a channel of the device, sample by sample, in its unit. */
    std::vector<double> sumOf(const MappedChannel& channel) const;
};

/** Reads the source to its end. Throws CaseError for fewer than two instants. */
RecordedSignal readSignal(waveform::SignalSource& source, const ChannelMap& map);

} // namespace importing
