#include "report/ThinnedCurves.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace report {

namespace {
/** As a part of the height of a panel, which has up to 250 units. */
constexpr double kTolerance = 1e-3;

using Points = std::vector<plot::Point>;

/**
 * The slopes of lines from the last kept point that pass all later points within the tolerance. A
 * line may end at a point whose own slope is in the range.
 */
class SlopeRange
{
public:
    SlopeRange(const plot::Point& from, double tolerance) : mFrom(from), mTolerance(tolerance) {}

    /** False, without a change, if no line may end at the point. */
    bool add(const plot::Point& point)
    {
        const double width = point.mX - mFrom.mX;
        const double slope = (point.mY - mFrom.mY) / width;
        // This condition also holds at a gap of the curve, which is NaN.
        if (!(width > 0.0 && slope >= mLow && slope <= mHigh)) {
            return false;
        }
        mLow = std::max(mLow, slope - mTolerance / width);
        mHigh = std::min(mHigh, slope + mTolerance / width);
        return true;
    }

private:
    plot::Point mFrom;
    double mTolerance;
    double mLow = -std::numeric_limits<double>::infinity();
    double mHigh = std::numeric_limits<double>::infinity();
};

Points thinned(const Points& points, double tolerance)
{
    if (points.size() < 3) {
        return points;
    }
    Points kept{points.front()};
    SlopeRange range(points.front(), tolerance);
    for (size_t i = 1; i < points.size(); ++i) {
        if (range.add(points[i])) {
            continue;
        }
        if (i > 1) {
            kept.push_back(points[i - 1]);
        }
        range = SlopeRange(points[i - 1], tolerance);
        if (!range.add(points[i])) {
            kept.push_back(points[i]);
            range = SlopeRange(points[i], tolerance);
        }
    }
    kept.push_back(points.back());
    return kept;
}

void thinPanels(std::vector<plot::Panel>* panels)
{
    for (plot::Panel& panel : *panels) {
        for (plot::Curve& curve : panel.mCurves) {
            curve.mPoints = thinned(curve.mPoints, (panel.mHigh - panel.mLow) * kTolerance);
        }
    }
}
} // namespace

void thinCurves(plot::Picture* picture)
{
    thinPanels(&picture->mWhole);
    for (plot::WaveColumn& column : picture->mColumns) {
        thinPanels(&column.mPanels);
    }
}

} // namespace report
