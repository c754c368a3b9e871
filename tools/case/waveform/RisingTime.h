#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <vector>

namespace waveform {

/**
 * Turns time stamps into times that begin at 0 and never fall. If a stamp falls, the time advances
 * by the last step. If a stamp repeats, as those of a coarse clock do, the time repeats, too.
 *
 * Number: the type of the stamps; an integer keeps every digit of a large stamp. Times are exact up
 * to 2^53 units.
 */
template <typename Number>
class RisingTime
{
public:
    /**
     * @return the time of the sample with this stamp since the first one, in the stamps' unit.
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
        } else if (time < mTime) {
            ++mFalling;
            mTime += mStep;
        } else {
            ++mRepeated;
        }
        ++mCount;
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

    /**
     * Whether the stamps are a time: a clock may be set back once, or at most in every tenth step.
     */
    bool isTime() const
    {
        return mFalling == 0 || mFalling * 10 < mCount || (mFalling == 1 && mTime > 0.0);
    }

    /** Number of stamps that fell. */
    size_t fallen() const { return mFalling; }

    /** Remarks on oddities, for the user. */
    std::vector<std::string> remarks() const
    {
        std::vector<std::string> texts;
        if (mFalling > 0) {
            texts.push_back(
                fmt::format("{} time stamps fall: the step before them is repeated", mFalling));
        }
        if (mRepeated > 0) {
            texts.push_back(fmt::format("{} time stamps repeat the one before them", mRepeated));
        }
        return texts;
    }

private:
    bool mIsFirst = true;
    size_t mCount = 0;       ///< of stamps
    Number mStamp = 0;       ///< the last one
    double mStampTime = 0.0; ///< time of the sample with it
    double mTime = 0.0;
    double mStep = 0.0;
    size_t mFalling = 0;
    size_t mRepeated = 0;
};

} // namespace waveform
