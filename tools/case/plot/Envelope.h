#pragma once

#include <cstddef>
#include <vector>

namespace plot {

struct Point
{
    double mX;
    double mY;
};

/**
 * Some curves over the same rising x, of any length in bounded memory: what is denser than the
 * columns of a picture is kept as its least and its largest value a column, each where it was.
 */
class Envelope
{
public:
    /** Keeps between columns and twice as many once there are so many. Requires: columns > 0. */
    Envelope(size_t curves, size_t columns) : mMaxColumns(2 * columns), mCurves(curves) {}

    /** A value that is not a number is left out. Requires: a value a curve. */
    void add(double x, const std::vector<double>& values);

    /** In order of x; at most two points a column. */
    std::vector<Point> curve(size_t curve) const;

private:
    struct Column
    {
        Point mLeast;
        Point mMost;
        bool mIsEmpty;
    };

    static void join(Column* column, const Column& other);
    void halve();

    size_t mMaxColumns;
    size_t mInColumn = 1; ///< values that a full column stands for
    size_t mInLast = 0;   ///< values in the last column
    std::vector<std::vector<Column>> mCurves;
};

} // namespace plot
