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
 * Curves over the same rising x, of any length in bounded memory. If they are denser than the
 * columns of a picture, the smallest and the largest value of each column are kept, with their x.
 */
class Envelope
{
public:
    /** Once full, keeps between `columns` and twice as many columns. Requires: columns > 0. */
    Envelope(size_t curves, size_t columns) : mMaxColumns(2 * columns), mCurves(curves) {}

    /** NaN is left out. Requires: one value per curve. */
    void add(double x, const std::vector<double>& values);

    /** Makes it as coarse as an envelope for this number of columns. Requires: columns > 0. */
    void limit(size_t columns);

    /** In order of x; at most two points per column. */
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
    size_t mInColumn = 1; ///< number of values in a full column
    size_t mCount = 0;    ///< values added
    std::vector<std::vector<Column>> mCurves;
};

} // namespace plot
