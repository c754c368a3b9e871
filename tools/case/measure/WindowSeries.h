#pragma once

#include <list>

#include "measure/WindowMeans.h"
#include "measure/WindowMeter.h"
#include "measure/WindowRows.h"

namespace measure {

/**
 * Windows of 10/12 periods without gaps, and their aggregates: over 15 windows (150/180 periods),
 * and over 10 minutes of UTC.
 *
 * At each full 10 minutes a new series of windows begins with the next sample. The previous series
 * completes its window, which still belongs to the ended 10 minutes, and its 150/180 periods. Both
 * overlap the new series.
 */
class WindowSeries
{
public:
    WindowSeries(WindowMeter meter, WindowRows rows, qint64 beginUtcNs);

    /** Takes the samples up to the end of the history, 360 per period. */
    void take(const SampleHistory& samples, MeasurementOutput& output);

    /** To be called after the last sample. */
    void finish(const SampleHistory& samples, MeasurementOutput& output);

    /** The first sample that is still needed. */
    size_t needed() const;

private:
    /** Windows that follow one another. */
    struct Chain
    {
        bool isOver() const { return mEnd > 0 && mNext >= mEnd; }

        size_t mNext = 0;           ///< begin of the next window
        size_t mEnd = 0;            ///< sample at which the next chain begins; 0: not known yet
        bool mBeganAtMark = false;  ///< at a full 10 minutes, so these can become complete
        qint64 mEndUtcNs = 0;       ///< the full 10 minutes at which the next chain begins
        bool mHasTenMinutes = true; ///< not given out yet
        size_t mInThreeSeconds = 0; ///< windows of them, up to now
        WindowMeans mThreeSeconds;
        WindowMeans mTenMinutes;
    };

    void begin(size_t first, double seconds);
    void endAtMark(size_t sample);
    void measureChain(Chain& chain, const SampleHistory& samples, MeasurementOutput& output);
    void measureWindow(Chain& chain, const SampleHistory& samples, MeasurementOutput& output);
    qint64 utcOf(double seconds) const;

    WindowMeter mMeter;
    WindowRows mRows;
    qint64 mBeginUtcNs;
    qint64 mNextMarkNs = 0;   ///< the next full 10 minutes
    std::list<Chain> mChains; ///< the last one is current; at most one before it has not ended
    size_t mSearched = 0;     ///< up to that sample no mark is left
    bool mHasBegun = false;
};

} // namespace measure
