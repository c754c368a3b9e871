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
 * columns of a picture is kept as the smallest and the largest value of each column, where they
 * were.
 */
class Envelope
{
public:
    /** Once full, keeps between `columns` and twice as many columns. Requires: columns > 0. */
    Envelope(size_t curves, size_t columns) : mMaxColumns(2 * columns), mCurves(curves) {}

    /** A value that is not a number is left out. Requires: a value a curve. */
    void add(double x, const std::vector<double>& values);

    /** Makes it as coarse as one that was made for so many columns. Requires: columns > 0. */
    void limit(size_t columns);

    /** In order of x; at most two points a column. */
    std::vector<Point> curve(size_t curve) const;

private:
    struct Column
    {
        Point mMin;
        Point mMax;
        bool mIsEmpty;
    };

    static void join(Column* column, const Column& other);
    bool isLastFull() const { return mCount % mInColumn == 0; }
    void halveIfFull();
    void halve();

    size_t mMaxColumns;
    size_t mInColumn = 1; ///< values that a full column stands for
    size_t mCount = 0;    ///< values added
    std::vector<std::vector<Column>> mCurves;
};

} // namespace plot
