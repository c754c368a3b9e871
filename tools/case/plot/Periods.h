#pragma once

#include <functional>
#include <vector>

#include "plot/DrawnChannels.h"

namespace plot {

/** The samples of one nominal period. */
struct Period
{
    double mBegin = 0.0;                      ///< time of the first sample, in s
    double mEnd = 0.0;                        ///< at which the next one begins
    std::vector<double> mSeconds;             ///< times of the samples
    std::vector<double> mPhases;              ///< phase of each sample, 0 to less than 1
    std::vector<std::vector<double>> mValues; ///< of each curve

    size_t size() const { return mSeconds.size(); }
    double length() const { return mEnd - mBegin; }
    double middle() const { return (mBegin + mEnd) / 2.0; }
};

/**
 * Cuts a signal into nominal periods: of 360 samples for signals of the device, otherwise by the
 * nominal frequency. Memory is that of two periods.
 */
class Periods
{
public:
    /** Gets each period and the one before it, which is empty for the first and after a gap. */
    using Take = std::function<void(const Period& last, const Period& period)>;

    /** @param curves columns of values in the blocks */
    Periods(const waveform::SignalDescription& description, size_t curves, Take take);

    /** Takes the next block, as drawnBlock() makes it. */
    void add(const waveform::SignalBlock& block);

    /** Beginning of the current period, which was not passed on yet. Requires: a block. */
    double begin() const { return mPeriod.mSeconds.front(); }

    /**
     * To be called at the end. Passes on the last period if it is whole, within a sample, or the
     * only one.
     */
    void finish();

private:
    /** Limit, because a file may claim that all its samples belong to one period. */
    static constexpr size_t kMaxSamples = size_t{1} << 20U;

    double turnsAt(size_t sample, double seconds) const;
    void append(const waveform::SignalBlock& block, size_t begin, size_t end);
    void close(double end, bool isNextAdjacent);

    bool mIsOfDevice;
    double mHertz;
    Take mTake;
    Period mLast;
    Period mPeriod;
    double mNumber = 0.0; ///< of the period in progress
    bool mAnyTaken = false;
};

} // namespace plot
