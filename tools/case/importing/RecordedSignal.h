#pragma once

#include <vector>

#include "importing/ChannelMap.h"
#include "resampling/Interpolator.h"
#include "resampling/SampleTimes.h"
#include "waveform/SignalSource.h"

namespace importing {

/**
 * What an import needs of a source, in memory: the times and the channels that are mapped. Takes
 * 8 bytes for each sample of each of them, as far as the source really holds them.
 */
struct RecordedSignal
{
    std::vector<double> mSeconds;
    std::vector<resampling::SourceColumn> mColumns; ///< in the order of mSources
    std::vector<size_t> mSources;                   ///< channels of the source, from 0, rising

    size_t columnOf(size_t source) const;

    /** The sum that a channel of the device gets, sample by sample, in its unit. */
    std::vector<double> sumOf(const MappedChannel& channel) const;
};

/** Reads the source to its end. Throws CaseError for fewer than two instants. */
RecordedSignal readSignal(waveform::SignalSource& source, const ChannelMap& map);

} // namespace importing
