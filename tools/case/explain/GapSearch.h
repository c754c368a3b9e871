#pragma once

#include "explain/PlaybackTracker.h"

namespace explain {

/** Where play may go on behind samples that were lost. */
struct GapAnswer
{
    PlaybackTracker mAfter; ///< empty where no sample stands at that very time
    size_t mLost;           ///< the least number of samples that may have been lost
};

/**
 * Goes on by the samples that were lost when the next one has a stamp that long after the last.
 * Looks at no more than kMaxGapNs, and leaves out what lies behind kMaxPlaysInGap plays.
 */
GapAnswer searchBehindGap(const PlaybackTracker& expected, qint64 gapNs);

} // namespace explain
