#pragma once

#include <complex>
#include <deque>
#include <vector>

#include "plot/Periods.h"

namespace plot {

/**
 * The frequency of a signal over time: how far the phase of its fundamental turns from one window
 * of two periods to the next, which overlaps it by one. The windows are raised cosines. All
 * channels count, the large ones more; and the median of some windows is taken, so that a jump of
 * the phase is none of the frequency.
 */
class FrequencyTrack
{
public:
    /** @param channels from the first on, so many */
    explicit FrequencyTrack(size_t channels) : mLast(channels), mWindow(channels) {}

    struct Value
    {
        double mSeconds;
        double mHertz; ///< NaN where there is no fundamental
    };

    /**
     * Takes the next period and the one before it, which is empty after a gap.
     * @return whether a value of some periods ago is known now
     */
    bool add(const Period& last, const Period& period, Value* value);

private:
    using Phasor = std::complex<double>;

    void makeWeights(const std::vector<double>& phases);
    double turnInto(const Period& last, const Period& period);

    std::vector<double> mPhases; ///< that the weights below are for
    std::vector<Phasor> mRising;
    std::vector<Phasor> mFalling;
    std::vector<Phasor> mLast;   ///< of each channel, the first half of the next window
    std::vector<Phasor> mWindow; ///< of each channel, the last whole window
    std::deque<Value> mValues;   ///< those that the median is of
    size_t mInRow = 0;           ///< periods without a gap
};

} // namespace plot
