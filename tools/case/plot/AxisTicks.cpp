#include "plot/AxisTicks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace plot {

namespace {
/** Closer ticks make the grid too dense, however short their numbers are. */
constexpr double kMaxTimeSteps = 15.0;

/** Min space between two numbers, in letters. */
constexpr double kMinLettersBetween = 3.0;

/**
 * An axis that ends just before a tick, by less than this part of a step, still gets it: 1 s if the
 * last of 1000 samples is at 0.999 s. The difference cannot be seen.
 */
constexpr double kTolerance = 0.01;

/** A limit that no real axis reaches. */
constexpr int kMaxTicks = 100;

std::string timeText(double seconds)
{
    return fmt::format("{:.12g}", seconds);
}

std::string valueText(double value)
{
    return fmt::format("{:.6g}", value);
}

/** The smallest 1, 2 or 5 times a power of ten with at most `steps` steps in the width. */
double roundStep(double width, double steps)
{
    const double decade = std::pow(10.0, std::floor(std::log10(width / steps)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * decade * steps >= width) {
            return factor * decade;
        }
    }
    return 10.0 * decade;
}

double timeStep(double low, double high, double letters)
{
    const auto widthAt = [](double time) { return timeText(time).size(); };
    for (double steps = kMaxTimeSteps;; --steps) {
        const double step = roundStep(high - low, steps);
        const double last = std::floor(high / step);
        const auto widest = std::max(widthAt(last * step), widthAt((last - 1.0) * step));
        if (steps <= 1.0 ||
            (static_cast<double>(widest) + kMinLettersBetween) * (high - low) / step <= letters) {
            return step;
        }
    }
}

Axis axis(double low, double high, double step, std::string (*textOf)(double))
{
    Axis axis{low, high, {}};
    const double first = std::ceil(low / step - kTolerance);
    for (int i = 0; i < kMaxTicks; ++i) {
        const double value = (first + i) * step;
        if (value > high + kTolerance * step) {
            break;
        }
        const double inside = std::clamp(value, low, high);
        axis.mTicks.push_back({inside, textOf(value + 0.0)}); // -0 becomes 0
    }
    return axis;
}
} // namespace

Axis timeAxis(double low, double high, double letters)
{
    return axis(low, high, timeStep(low, high, letters), timeText);
}

Axis valueAxis(double low, double high, double ticks)
{
    return axis(low, high, roundStep(high - low, ticks), valueText);
}

} // namespace plot
