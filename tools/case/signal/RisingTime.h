#pragma once

#include <cstddef>

/**
 * Makes times of time stamps: they begin at 0 and rise. Where a stamp does not rise, the time
 * goes on by the last step, and the steps back are counted.
 *
 * Number: what stamps are; a whole one keeps every digit of a large stamp. Times are exact up to
 * 2^53 units.
 */
template <typename Number>
class RisingTime
{
public:
    /**
     * @return the time of the sample with this stamp, in the stamps' unit from the first.
     * Requires: the difference of two stamps fits a Number.
     */
    double next(Number stamp)
    {
        const double time = mStampTime + static_cast<double>(stamp - mStamp);
        if (mIsFirst) {
            mIsFirst = false;
        } else if (time > mTime) {
            mStep = time - mTime;
            mTime = time;
        } else {
            ++mNotRising;
            mTime += mStep;
        }
        mStamp = stamp;
        mStampTime = mTime;
        return mTime;
    }

    /** The time of a sample without a stamp. */
    double nextWithoutStamp()
    {
        mTime += mStep;
        return mTime;
    }

    /** Stamps that did not rise. */
    size_t notRising() const { return mNotRising; }

    /** Between the last two samples; 0 while no stamp has risen. */
    double step() const { return mStep; }

private:
    bool mIsFirst = true;
    Number mStamp = 0;       ///< the last one
    double mStampTime = 0.0; ///< time of the sample with it
    double mTime = 0.0;
    double mStep = 0.0;
    size_t mNotRising = 0;
};
