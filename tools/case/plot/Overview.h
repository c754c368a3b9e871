#pragma once

#include <vector>

#include "plot/ChangeDetector.h"
#include "plot/Envelope.h"
#include "plot/FrequencyTrack.h"

namespace plot {

/**
 * An overview of a signal: rms of each period and frequency over time, and changes. Made in one
 * pass in constant memory.
 */
class Overview
{
public:
    /** @param columns width of the picture */
    Overview(const waveform::SignalDescription& description, const DrawnChannels& channels,
             size_t columns);

    Overview(const Overview&) = delete;
    Overview& operator=(const Overview&) = delete;
    ~Overview() = default;

    /** Takes the next block of the described signal, as drawnBlock() makes it. */
    void add(const waveform::SignalBlock& block);

    /** To be called at the end of the signal. */
    void finish() { mPeriods.finish(); }

    /** The rms of a drawn channel, in the unit of its group. */
    std::vector<Point> rms(size_t curve) const { return mRms.curve(curve); }
    std::vector<Point> hertz() const { return mHertz.curve(0); }
    double largestRms(size_t group) const { return mChanges.largest(group); }
    const ChangeDetector& changes() const { return mChanges; }

    /** Changes that are found later do not begin before this time. */
    double earliestNextChange() const { return mEarliestNext; }

    /** Times of the first and the last sample, in s. */
    double begin() const { return mBegin; }
    double end() const { return mEnd; }

    /** Length of the first period, in s; 0 without samples. */
    double period() const { return mFirstPeriod; }

private:
    void take(const Period& last, const Period& period);

    Envelope mRms;
    Envelope mHertz;
    FrequencyTrack mTrack;
    ChangeDetector mChanges;
    Periods mPeriods;
    std::vector<double> mRmsOfPeriod;
    double mEarliestNext = 0.0;
    double mBegin = 0.0;
    double mEnd = 0.0;
    double mFirstPeriod = 0.0;
};

} // namespace plot
