#pragma once

#include <cstddef>

/**
 * Makes times of time stamps: they begin at 0 and rise. Where a stamp does not rise, the time
 * goes on by the last step, and the steps back are counted.
 *
 * Number: what stamps are; a whole one keeps every digit of a large stamp.
 */
template <typename Number>
class RisingTime
{
public:
    /** @return the time of the sample with this stamp, in the stamps' unit from the first. */
    Number next(Number stamp)
    {
        if (mCount == 0) {
            mFirst = stamp;
        } else if (const Number time = stamp - mFirst - mBack; time > mTime) {
            mStep = time - mTime;
            mTime = time;
        } else {
            ++mNotRising;
            mTime += mStep;
            mBack = stamp - mFirst - mTime;
        }
        ++mCount;
        return mTime;
    }

    /** As next() for a sample without a stamp. */
    Number nextWithoutStamp() { return next(mFirst + mBack + mTime + mStep); }

    /** Stamps that did not rise. */
    size_t notRising() const { return mNotRising; }

    /** Of the last two samples that rose; 0 while there are none. */
    Number step() const { return mStep; }

private:
    Number mFirst = 0;
    Number mBack = 0; ///< how far the stamps are ahead of the time after those that did not rise
    Number mTime = 0;
    Number mStep = 0;
    size_t mCount = 0;
    size_t mNotRising = 0;
};
