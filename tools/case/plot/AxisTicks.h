#pragma once

#include <string>
#include <vector>

namespace plot {

struct Tick
{
    double mValue;
    std::string mLabel; ///< empty for a tick without a number
};

/** The range of an axis and its ticks, which are inside it in rising order. */
struct Axis
{
    double mLow;
    double mHigh;
    std::vector<Tick> mTicks;

    /** The position of a value on the axis: 0 at mLow, 1 at mHigh. */
    double share(double value) const { return (value - mLow) / (mHigh - mLow); }
};

/** A line across a panel. */
struct Mark
{
    double mSeconds;
    bool mIsCommand; ///< otherwise a moment
};

/**
 * Ticks at round times, with room for their numbers.
 *
 * @param letters that fit side by side along the axis
 * Requires: low < high.
 */
Axis timeAxis(double low, double high, double letters);

/** Ticks at round values. @param ticks approximate number. Requires: low < high. */
Axis valueAxis(double low, double high, double ticks);

} // namespace plot
