#pragma once

#include <complex>
#include <deque>
#include <vector>

#include "plot/Periods.h"

namespace plot {

/**
 * The frequency of a signal over time, from the turn of the fundamental's phase between windows of
 * two periods that overlap by one. The windows are raised cosines. All channels count, larger ones
 * more. A median over some windows suppresses phase jumps.
 */
class FrequencyTrack
{
public:
    /** @param channels number of channels, from the first on */
    explicit FrequencyTrack(size_t channels) : mLast(channels), mWindow(channels) {}

    struct Value
    {
        double mSeconds;
        double mHertz; ///< NaN if there is no fundamental
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

    std::vector<double> mPhases; ///< of the weights below
    std::vector<Phasor> mRising;
    std::vector<Phasor> mFalling;
    std::vector<Phasor> mLast;   ///< of each channel, the first half of the next window
    std::vector<Phasor> mWindow; ///< of each channel, the last whole window
    std::deque<Value> mValues;   ///< the values for the median
    size_t mInRow = 0;           ///< periods without a gap
};

} // namespace plot
