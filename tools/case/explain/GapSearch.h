#pragma once

#include "explain/PlaybackTracker.h"

namespace explain {

/** Where playing may continue after lost samples. */
struct GapAnswer
{
    PlaybackTracker mAfter; ///< empty if no sample has exactly this time
    size_t mLost;           ///< the smallest number of samples that may be lost
};

/**
 * Skips the lost samples if the time stamp of the next one is this long after the last. Searches up
 * to kMaxGapNs and kMaxPlaysInGap plays.
 */
GapAnswer searchAfterGap(const PlaybackTracker& expected, qint64 gapNs);

} // namespace explain
