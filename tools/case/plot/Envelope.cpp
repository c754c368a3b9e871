#include "plot/Envelope.h"

#include <algorithm>
#include <cmath>

namespace plot {

void Envelope::add(double x, const std::vector<double>& values)
{
    const bool isNew = mInLast == 0;
    for (size_t i = 0; i < mCurves.size(); ++i) {
        const Point point{x, values[i]};
        const Column column{point, point, !std::isfinite(values[i])};
        isNew ? mCurves[i].push_back(column) : join(&mCurves[i].back(), column);
    }
    mInLast = (mInLast + 1) % mInColumn;
    if (mInLast == 0 && !mCurves.empty() && mCurves[0].size() == mMaxColumns) {
        halve();
    }
}

void Envelope::join(Column* column, const Column& other)
{
    if (other.mIsEmpty) {
        return;
    }
    if (column->mIsEmpty) {
        *column = other;
        return;
    }
    if (other.mLeast.mY < column->mLeast.mY) {
        column->mLeast = other.mLeast;
    }
    if (other.mMost.mY > column->mMost.mY) {
        column->mMost = other.mMost;
    }
}

/** Joins two columns each; their number is even. */
void Envelope::halve()
{
    for (std::vector<Column>& columns : mCurves) {
        for (size_t i = 0; i < columns.size() / 2; ++i) {
            columns[i] = columns[2 * i];
            join(&columns[i], columns[2 * i + 1]);
        }
        columns.resize(columns.size() / 2);
    }
    mInColumn *= 2;
}

std::vector<Point> Envelope::curve(size_t curve) const
{
    std::vector<Point> points;
    for (const Column& column : mCurves[curve]) {
        if (column.mIsEmpty) {
            continue;
        }
        const bool isRising = column.mLeast.mX <= column.mMost.mX;
        points.push_back(isRising ? column.mLeast : column.mMost);
        if (column.mLeast.mX != column.mMost.mX) {
            points.push_back(isRising ? column.mMost : column.mLeast);
        }
    }
    return points;
}

} // namespace plot
