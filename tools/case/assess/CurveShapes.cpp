#include "assess/CurveShapes.h"

#include <algorithm>
#include <cmath>

#include "assess/AssessmentPicture.h"
#include "base/Numbers.h"

namespace assess {

std::vector<plot::Point> splitAtGaps(const std::vector<plot::Point>& points, double longest)
{
    constexpr double kDash = 0.2;
    std::vector<plot::Point> broken;
    for (size_t i = 0; i < points.size(); ++i) {
        const plot::Point& point = points[i];
        const bool isFirst = i == 0 || point.mX - points[i - 1].mX > longest;
        const bool isLast = i + 1 == points.size() || points[i + 1].mX - point.mX > longest;
        if (isFirst && i > 0) {
            broken.push_back({(point.mX + points[i - 1].mX) / 2.0, std::nan("")});
        }
        if (isFirst && isLast) {
            broken.push_back({point.mX + (i == 0 ? kDash : -kDash) * longest, point.mY});
        }
        broken.push_back(point);
    }
    return broken;
}

std::vector<plot::Point> arrowTo(double magnitude, double degrees, double headLength)
{
    constexpr double kHeadDegrees = 155.0;
    const auto polar = [](double length, double angle) {
        const double radians = angle * base::kRadiansPerDegree;
        return plot::Point{length * std::cos(radians), length * std::sin(radians)};
    };
    const plot::Point tip = polar(magnitude, degrees);
    std::vector<plot::Point> points{{0.0, 0.0}, tip};
    for (const double turn : {kHeadDegrees, -kHeadDegrees}) {
        const plot::Point barb = polar(std::min(headLength, magnitude), degrees + turn);
        points.push_back({tip.mX + barb.mX, tip.mY + barb.mY});
        points.push_back(tip);
    }
    return points;
}

plot::Curve circleOf(double radius)
{
    constexpr int kParts = 180;
    plot::Curve circle{"", plot::kConductorColours - 1, false, {}};
    for (int i = 0; i <= kParts; ++i) {
        const double angle = base::kTwoPi * i / kParts;
        circle.mPoints.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return circle;
}

plot::Panel& panelWith(plot::WaveColumn& column, const std::string& axis)
{
    if (column.mPanels.empty() || column.mPanels.back().mAxis != axis) {
        column.mPanels.push_back({axis, 0.0, 0.0, {}});
    }
    return column.mPanels.back();
}

void makeBars(plot::Panel& panel, double apart)
{
    const double middle = (static_cast<double>(panel.mCurves.size()) - 1.0) / 2.0;
    double lowest = 0.0;
    for (size_t i = 0; i < panel.mCurves.size(); ++i) {
        panel.mCurves[i].mHasBars = true;
        for (plot::Point& point : panel.mCurves[i].mPoints) {
            point.mX += (static_cast<double>(i) - middle) * apart;
            lowest = std::min(lowest, point.mY);
        }
    }
    fitRange(panel);
    panel.mLow = lowest < 0.0 ? panel.mLow : 0.0;
    panel.mHigh = std::max(panel.mHigh, 0.0);
}

void setRanges(plot::WaveColumn& column, bool hasBars)
{
    constexpr double kMarginPart = 1.0 / 20.0; // of the time axis, so that no bar is cut off
    constexpr double kBarPart = 1.0 / 200.0;
    constexpr double kMinSpan = 1e-3;
    const double span = column.mTo - column.mFrom;
    const double shown = span > kMinSpan ? span : 1.0;
    for (plot::Panel& panel : column.mPanels) {
        hasBars ? makeBars(panel, kBarPart * shown) : fitRange(panel);
    }
    if (hasBars || span <= kMinSpan) {
        column.mFrom -= kMarginPart * shown;
        column.mTo += kMarginPart * shown;
    }
}

} // namespace assess
