#pragma once

#include <string>
#include <vector>

#include "plot/Periods.h"

namespace plot {

/** A change of a signal. */
struct Change
{
    double mSeconds = 0.0; ///< at which it begins
    double mScore = 0.0;   ///< rms of the change relative to the signal, about 0 to 1
    size_t mPeriod = 0;    ///< in which it begins
    size_t mCurve = 0;     ///< with the largest change; number of curves for the frequency
    double mBefore = 0.0;
    double mAfter = 0.0; ///< rms, or Hz
};

/**
 * Finds where a period begins to differ from the one before it, or the rate of the time stamps
 * changes. Reads the periods once and keeps the changes with the highest scores.
 */
class ChangeDetector
{
public:
    /**
     * Max number of kept changes. It is enough for the best three that are five periods apart:
     * changes begin in every other period at most (closer ones are merged), so each of them rules
     * out four others, and the best eleven include three; one more is still growing.
     */
    static constexpr size_t kMaxChanges = 12;

    explicit ChangeDetector(const DrawnChannels& channels);

    /** @param rms of the period, one value per curve */
    void add(const Period& last, const Period& period, const std::vector<double>& rms);

    /** Largest rms of a group. */
    double largest(size_t group) const { return mScales[group]; }

    /** In order of time. */
    const std::vector<Change>& changes() const { return mChanges; }

    std::string textOf(const Change& change) const;

private:
    Change findChange(const Period& last, const Period& period);
    double differenceOf(const Period& last, const Period& period, size_t curve);
    double onsetIn(const Period& period);
    void completeLast(const std::vector<double>& rms);
    void keep(const Change& change);
    void dropLowest();

    std::vector<DrawnChannel> mChannels; ///< of each curve
    std::vector<size_t> mGroupOf;        ///< group of each curve
    std::vector<DrawnGroup> mGroups;
    std::vector<double> mScales; ///< largest rms of each group so far
    std::vector<double> mLastRms;
    std::vector<double> mLastDifferences;
    std::vector<double> mDifference; ///< sample by sample, of one curve
    std::vector<Change> mChanges;
    size_t mPeriods = 0;
};

} // namespace plot
