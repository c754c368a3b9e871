#include "resampling/SampleTimes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace resampling {

namespace {
/**
 * Max distance of a stamp from the line of its segment, in steps: clearly less than half a step, at
 * which a sample would be nearer to its neighbour's time.
 */
constexpr double kJitter = 0.3;
constexpr double kRoundingOfSteps = 1e-6;

/** In s. No recorder has shorter steps; this keeps times and indices finite. */
constexpr double kShortestStep = 1e-9;

/**
 * Index of the last sample such that one line from `first` passes all samples up to it within the
 * tolerance. The range of possible slopes is narrowed sample by sample.
 */
size_t endOfLine(const std::vector<double>& seconds, size_t first, double tolerance)
{
    double minSlope = 0.0;
    double maxSlope = std::numeric_limits<double>::infinity();
    size_t last = first + 1;
    for (; last < seconds.size(); ++last) {
        const auto steps = static_cast<double>(last - first);
        const double span = seconds[last] - seconds[first];
        minSlope = std::max(minSlope, (span - tolerance) / steps);
        maxSlope = std::min(maxSlope, (span + tolerance) / steps);
        if (minSlope > maxSlope) {
            break;
        }
    }
    return last - 1;
}

/** The line from the first stamp to the last, which were computed from a rate. */
SampleTimes::Segment spanned(const std::vector<double>& seconds, size_t first, size_t last)
{
    const double span = seconds[last] - seconds[first];
    const double step = span / static_cast<double>(last - first);
    return {first, last, seconds[first], std::max(step, kShortestStep)};
}

/** The least-squares line through the stamps; the line through both if there are two. */
SampleTimes::Segment fitted(const std::vector<double>& seconds, size_t first, size_t last)
{
    const auto count = static_cast<double>(last - first + 1);
    const double middle = (count - 1.0) / 2.0;
    double mean = 0.0;
    double product = 0.0;
    for (size_t i = first; i <= last; ++i) {
        const double offset = seconds[i] - seconds[first];
        mean += offset / count;
        product += (static_cast<double>(i - first) - middle) * offset;
    }
    const double squares = count * (count * count - 1.0) / 12.0;
    const double step = std::max(product / squares, kShortestStep);
    return {first, last, seconds[first] + mean - middle * step, step};
}

/** How often steps of two lengths occur, alone and after one of the same length. */
struct StepCounts
{
    size_t mShort = 0;
    size_t mLong = 0;
    size_t mShortPairs = 0;
    size_t mLongPairs = 0;
};

bool isSameStep(double a, double b)
{
    constexpr double kRoundingOfStamps = 1e-3; ///< of a step
    return std::abs(a - b) < kRoundingOfStamps * b;
}

StepCounts countSteps(const std::vector<double>& seconds, double shortStep, double longStep)
{
    StepCounts counts;
    double before = 0.0;
    for (size_t i = 1; i < seconds.size(); ++i) {
        const double step = seconds[i] - seconds[i - 1];
        const bool isPair = isSameStep(step, before);
        if (isSameStep(step, shortStep)) {
            ++counts.mShort;
            counts.mShortPairs += isPair ? 1 : 0;
        } else if (isSameStep(step, longStep)) {
            ++counts.mLong;
            counts.mLongPairs += isPair ? 1 : 0;
        }
        before = step;
    }
    return counts;
}

/**
 * The tick of a coarse clock whose stamps never repeat, 0 for other stamps. Nearly all steps are k
 * or k + 1 ticks; both are frequent, and one of them never occurs twice in a row, as with 3 and 4
 * ms at 300 samples/s. From 4 ticks on, kJitter covers one.
 */
double tickOfSteps(const std::vector<double>& seconds, double shortStep)
{
    constexpr double kMaxTicks = 4.0;
    constexpr double kOften = 0.05;  ///< part of all steps; fewer long steps may be gaps
    constexpr double kSeldom = 0.01; ///< part of all steps; more are another rate
    double longStep = std::numeric_limits<double>::infinity();
    for (size_t i = 1; i < seconds.size(); ++i) {
        const double step = seconds[i] - seconds[i - 1];
        longStep = isSameStep(step, shortStep) ? longStep : std::min(longStep, step);
    }
    const double tick = longStep - shortStep;
    const double ticks = std::round(shortStep / tick);
    if (!(ticks >= 1.0 && ticks < kMaxTicks) || !isSameStep(ticks * tick, shortStep)) {
        return 0.0;
    }
    const StepCounts counts = countSteps(seconds, shortStep, longStep);
    const auto steps = static_cast<double>(seconds.size() - 1);
    const auto share = [steps](size_t count) { return static_cast<double>(count) / steps; };
    const bool isCoarse = share(counts.mShort) > kOften && share(counts.mLong) > kOften &&
                          share(counts.mShort + counts.mLong) > 1.0 - kOften &&
                          share(std::min(counts.mShortPairs, counts.mLongPairs)) < kSeldom;
    return isCoarse ? tick : 0.0;
}

/** The tick of a coarse clock, plus a margin for rounding. A line may miss the stamps by this. */
double tickOf(const std::vector<double>& seconds)
{
    double tick = std::numeric_limits<double>::infinity();
    bool doRepeat = false;
    for (size_t i = 1; i < seconds.size(); ++i) {
        const double step = seconds[i] - seconds[i - 1];
        if (step > 0.0) {
            tick = std::min(tick, step);
        } else {
            doRepeat = true;
        }
    }
    if (!std::isfinite(tick)) {
        return 0.0;
    }
    return (doRepeat ? tick : tickOfSteps(seconds, tick)) * (1.0 + kRoundingOfSteps);
}
} // namespace

SampleTimes::SampleTimes(const std::vector<double>& seconds, bool areExact)
    : mTick(areExact ? 0.0 : tickOf(seconds))
{
    for (size_t first = 0; first + 1 < seconds.size();) {
        const double step = seconds[first + 1] - seconds[first];
        const double tolerance = std::max(mTick, step * (areExact ? kRoundingOfSteps : kJitter));
        const size_t last = std::max(endOfLine(seconds, first, tolerance), first + 1);
        mSegments.push_back(areExact ? spanned(seconds, first, last)
                                     : fitted(seconds, first, last));
        first = last;
    }
    // Stamps are truncated, so their line begins before the first stamp.
    const double lead = seconds.front() - mSegments.front().mStart;
    for (Segment& segment : mSegments) {
        segment.mStart += lead;
    }
}

const SampleTimes::Segment& SampleTimes::segmentAt(double seconds) const
{
    const auto next = std::upper_bound(
        mSegments.begin(), mSegments.end(), seconds,
        [](double value, const Segment& segment) { return value < segment.mStart; });
    return next == mSegments.begin() ? *next : *std::prev(next);
}

size_t SampleTimes::nearestSample(double seconds) const
{
    const Segment& segment = segmentAt(seconds);
    const double steps = std::round((seconds - segment.mStart) / segment.mStep);
    const auto last = static_cast<double>(segment.mLast - segment.mFirst);
    return segment.mFirst + static_cast<size_t>(std::clamp(steps, 0.0, last));
}

double SampleTimes::timeOf(size_t sample) const
{
    const auto next = std::upper_bound(
        mSegments.begin(), mSegments.end(), sample,
        [](size_t value, const Segment& segment) { return value < segment.mFirst; });
    return std::prev(next)->timeOf(sample);
}

} // namespace resampling
