#include "plot/Envelope.h"

#include <algorithm>
#include <cmath>

namespace plot {

void Envelope::add(double x, const std::vector<double>& values)
{
    const bool isNew = isLastFull();
    for (size_t i = 0; i < mCurves.size(); ++i) {
        const Point point{x, values[i]};
        const Column column{point, point, !std::isfinite(values[i])};
        isNew ? mCurves[i].push_back(column) : join(&mCurves[i].back(), column);
    }
    ++mCount;
    halveIfFull();
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
    if (other.mMin.mY < column->mMin.mY) {
        column->mMin = other.mMin;
    }
    if (other.mMax.mY > column->mMax.mY) {
        column->mMax = other.mMax;
    }
}

/** Joins the columns in pairs; the last of an odd number stays alone. */
void Envelope::halve()
{
    for (std::vector<Column>& columns : mCurves) {
        for (size_t i = 0; i < columns.size(); i += 2) {
            columns[i / 2] = columns[i];
            if (i + 1 < columns.size()) {
                join(&columns[i / 2], columns[i + 1]);
            }
        }
        columns.resize((columns.size() + 1) / 2);
    }
    mInColumn *= 2;
}

void Envelope::limit(size_t columns)
{
    mMaxColumns = std::min(mMaxColumns, 2 * columns);
    halveIfFull();
}

/** Halves the columns when there are too many. The last one may still grow. */
void Envelope::halveIfFull()
{
    while (!mCurves.empty() && (mCurves[0].size() > mMaxColumns ||
                                (mCurves[0].size() == mMaxColumns && isLastFull()))) {
        halve();
    }
}

std::vector<Point> Envelope::curve(size_t curve) const
{
    std::vector<Point> points;
    for (const Column& column : mCurves[curve]) {
        if (column.mIsEmpty) {
            continue;
        }
        const bool isRising = column.mMin.mX <= column.mMax.mX;
        points.push_back(isRising ? column.mMin : column.mMax);
        if (column.mMin.mX != column.mMax.mX) {
            points.push_back(isRising ? column.mMax : column.mMin);
        }
    }
    return points;
}

} // namespace plot
