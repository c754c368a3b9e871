#pragma once

#include <string>
#include <vector>

#include "plot/Periods.h"

namespace plot {

/** When something happens. */
struct Moment
{
    double mSeconds;
    double mWeight; ///< how much happens: change relative to the signal, about 0 to 1
    std::string mText;
};

/**
 * Finds when something happens in a signal: where a period begins to differ from the one before
 * it, or the time stamps begin to go at another pace. Goes over the periods once and keeps the
 * weightiest.
 */
class Moments
{
public:
    explicit Moments(const DrawnChannels& channels);

    /** @param rms of the period, a value a channel */
    void add(const Period& last, const Period& period, const std::vector<double>& rms);

    /** Largest rms of a group. */
    double largest(size_t group) const { return mScales[group]; }

    /** What was found, in order of time. */
    std::vector<Moment> found() const;

private:
    struct Candidate
    {
        double mSeconds = 0.0;
        double mWeight = 0.0;
        size_t mPeriod = 0;
        size_t mChannel = 0; ///< that changes most; beyond the last one for the frequency
        double mBefore = 0.0;
        double mAfter = 0.0; ///< rms, or Hz
    };

    Candidate jumpIn(const Period& last, const Period& period);
    double differenceOf(const Period& last, const Period& period, size_t channel);
    double onsetIn(const Period& period);
    void completeLast(const std::vector<double>& rms);
    void keep(const Candidate& candidate);
    void forgetLighterHalf();
    std::string textOf(const Candidate& candidate) const;

    std::vector<DrawnChannel> mChannels;
    std::vector<size_t> mGroupOf; ///< each channel's
    std::vector<DrawnGroup> mGroups;
    std::vector<double> mScales; ///< largest rms of each group so far
    std::vector<double> mLastRms;
    std::vector<double> mLastDifferences;
    std::vector<double> mDifference; ///< sample by sample, of one channel
    std::vector<Candidate> mCandidates;
    size_t mPeriods = 0;
};

/**
 * The weightiest moments that lie apart by the width of a picture of them, in order of time; of
 * equal ones the first.
 */
std::vector<Moment> chooseMoments(std::vector<Moment> moments, size_t most, double apart);

} // namespace plot
