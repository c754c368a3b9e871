#pragma once

#include "explain/PlaybackTracker.h"

namespace explain {

/** Where play may continue after lost samples. */
struct GapAnswer
{
    PlaybackTracker mAfter; ///< empty where no sample stands at that very time
    size_t mLost;           ///< the min number of samples that may have been lost
};

/**
 * Skips the samples that were lost when the stamp of the next one is that long after the last.
 * Looks at no more than kMaxGapNs, and leaves out what is more than kMaxPlaysInGap plays away.
 */
GapAnswer searchAfterGap(const PlaybackTracker& expected, qint64 gapNs);

} // namespace explain
