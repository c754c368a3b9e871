#include "resampling/PhaseTrack.h"

#include <algorithm>
#include <cmath>

namespace resampling {

namespace {
/** Steps of Newton's method. The curve is almost straight, so each step doubles the digits. */
constexpr int kIterations = 6;

struct Curve
{
    double mValue;
    double mSlope; ///< per point
};

/** The cubic with the given values and slopes at 0 and 1; its tangents beyond. */
Curve hermite(double y0, double y1, double slope0, double slope1, double x)
{
    const double at = std::clamp(x, 0.0, 1.0);
    const double second = 3.0 * (y1 - y0) - 2.0 * slope0 - slope1;
    const double third = slope0 + slope1 - 2.0 * (y1 - y0);
    const double slope = slope0 + at * (2.0 * second + at * 3.0 * third);
    return {y0 + at * (slope0 + at * (second + at * third)) + (x - at) * slope, slope};
}

/** The curve through the points, between point `interval` and the next. */
Curve curveAt(const std::vector<double>& y, size_t interval, double x)
{
    const double chord = y[interval + 1] - y[interval];
    const double slope0 = interval > 0 ? (y[interval + 1] - y[interval - 1]) / 2.0 : chord;
    const double slope1 = interval + 2 < y.size() ? (y[interval + 2] - y[interval]) / 2.0 : chord;
    return hermite(y[interval], y[interval + 1], slope0, slope1, x);
}
} // namespace

PhaseTrack::PhaseTrack(double begin, double hop, std::vector<double> cycles, std::vector<Gap> gaps)
    : mBegin(begin), mHop(hop), mCycles(std::move(cycles)), mGaps(std::move(gaps))
{
}

size_t PhaseTrack::intervalOf(double points) const
{
    const auto last = static_cast<double>(mCycles.size() - 2);
    return static_cast<size_t>(std::clamp(points, 0.0, last));
}

double PhaseTrack::cyclesAt(double seconds) const
{
    const double points = (seconds - mBegin) / mHop;
    const size_t interval = intervalOf(points);
    return curveAt(mCycles, interval, points - static_cast<double>(interval)).mValue;
}

double PhaseTrack::secondsAt(double cycles) const
{
    const auto next = std::upper_bound(mCycles.begin(), mCycles.end(), cycles);
    const size_t interval = intervalOf(static_cast<double>(next - mCycles.begin()) - 1.0);
    double x = (cycles - mCycles[interval]) / (mCycles[interval + 1] - mCycles[interval]);
    for (int i = 0; i < kIterations; ++i) {
        const Curve curve = curveAt(mCycles, interval, x);
        x += (cycles - curve.mValue) / curve.mSlope;
    }
    return mBegin + (static_cast<double>(interval) + x) * mHop;
}

} // namespace resampling
