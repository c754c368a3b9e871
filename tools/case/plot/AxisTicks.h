#pragma once

#include <string>
#include <vector>

namespace plot {

struct Tick
{
    double mValue;
    std::string mLabel; ///< empty for a tick without a number
};

/** The range of an axis, and its ticks, which lie in it and rise. */
struct Axis
{
    double mLow;
    double mHigh;
    std::vector<Tick> mTicks;

    /** How far up the axis a value is: 0 at mLow, 1 at mHigh. */
    double share(double value) const { return (value - mLow) / (mHigh - mLow); }
};

/** A line across a panel. */
struct Mark
{
    double mSeconds;
    bool mIsCommand; ///< else a moment
};

/**
 * Ticks at round times, so far apart that their numbers do not touch.
 *
 * @param letters that fit side by side along the axis
 * Requires: low < high.
 */
Axis timeAxis(double low, double high, double letters);

/** About so many ticks at round values. Requires: low < high. */
Axis valueAxis(double low, double high, double ticks);

} // namespace plot
