#include "assess/Steps.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
constexpr size_t kPlateau = 8; ///< number of equal differences before and after a step
constexpr qint64 kMaxStepDurationNs = waveform::kSecondInNs / 5;
constexpr size_t kMinValues = 4; ///< number of values that a step may always take
constexpr double kMinShare = 0.01;
constexpr double kMinDegrees = 1.0;
constexpr double kFlat = 0.25; ///< part of the smallest step: max spread of equal differences
constexpr qint64 kAroundNs = waveform::kSecondInNs / 2;

/** Finds steps in the differences between values. */
class StepFinder
{
public:
    StepFinder(const std::vector<Sample>& samples, bool isAngle)
        : mSamples(samples), mIsAngle(isAngle)
    {
        for (size_t i = 1; i < samples.size(); ++i) {
            const double difference = samples[i].mValue - samples[i - 1].mValue;
            mDifferences.push_back(isAngle ? wrapped(difference) : difference);
        }
    }

    std::vector<Step> find();

private:
    bool isFlat(size_t first, double tolerance) const;
    double slope(size_t first) const;
    std::optional<Step> stepAfter(size_t first) const;
    double minSizeAt(size_t index) const;

    const std::vector<Sample>& mSamples;
    const bool mIsAngle;
    std::vector<double> mDifferences; ///< [i]: from i to i + 1
};

/** Min size of a step: a part of the larger neighbouring value, so that a step from 0 is found. */
double StepFinder::minSizeAt(size_t index) const
{
    if (mIsAngle) {
        return kMinDegrees;
    }
    const size_t last = std::min(index + kPlateau + 1, mSamples.size() - 1);
    return kMinShare * std::max(std::abs(mSamples[index].mValue), std::abs(mSamples[last].mValue));
}

bool StepFinder::isFlat(size_t first, double tolerance) const
{
    if (first + kPlateau > mDifferences.size()) {
        return false;
    }
    const auto begin = mDifferences.begin() + static_cast<std::ptrdiff_t>(first);
    const auto [min, max] = std::minmax_element(begin, begin + kPlateau);
    return *max - *min <= tolerance;
}

double StepFinder::slope(size_t first) const
{
    double sum = 0.0;
    for (size_t i = first; i < first + kPlateau; ++i) {
        sum += mDifferences[i];
    }
    return sum / kPlateau;
}

/** The step right after the plateau that begins at the index, if there is one. */
std::optional<Step> StepFinder::stepAfter(size_t first) const
{
    const size_t begin = first + kPlateau; // index of the last value of the plateau
    const double minSize = minSizeAt(begin);
    const double before = slope(first);
    if (begin >= mDifferences.size() || !isFlat(first, kFlat * minSize) ||
        std::abs(mDifferences[begin] - before) <= kFlat * minSize) {
        return std::nullopt;
    }
    double change = 0.0;
    for (size_t end = begin + 1; end + kPlateau <= mDifferences.size(); ++end) {
        change += mDifferences[end - 1];
        const bool isLong = mSamples[end].mUtcNs - mSamples[begin].mUtcNs > kMaxStepDurationNs;
        if (isLong && end - begin > kMinValues) {
            return std::nullopt;
        }
        const bool isAlike =
            isFlat(end, kFlat * minSize) && std::abs(slope(end) - before) <= kFlat * minSize;
        if (isAlike) {
            const double slopes = (before + slope(end)) / 2.0;
            const double size = change - slopes * static_cast<double>(end - begin);
            return std::abs(size) <= minSize
                       ? std::nullopt
                       : std::optional(Step{mSamples[begin].mUtcNs, mSamples[end].mUtcNs,
                                            mSamples[begin].mValue, size});
        }
    }
    return std::nullopt;
}

std::vector<Step> StepFinder::find()
{
    std::vector<Step> steps;
    for (size_t first = 0; first + kPlateau < mDifferences.size(); ++first) {
        if (const std::optional<Step> step = stepAfter(first)) {
            steps.push_back(*step);
        }
    }
    return steps;
}

/** The samples of a series around a step. */
std::vector<Sample> around(const Step& step, const std::vector<Sample>& samples)
{
    const auto isEarlier = [](const Sample& sample, qint64 ns) { return sample.mUtcNs < ns; };
    const auto begin =
        std::lower_bound(samples.begin(), samples.end(), step.mBeginNs - kAroundNs, isEarlier);
    const auto end = std::lower_bound(begin, samples.end(), step.mEndNs + kAroundNs, isEarlier);
    return {begin, end};
}

/** How much of the step a value has made: 0 before it, 1 after it, without the slope. */
double shareOf(double value, double base, const Step& step, bool isAngle)
{
    const double difference = value - base;
    return (isAngle ? wrapped(difference) : difference) / step.mSize;
}

/** The time in s at which a series has made half of the step; no value if it never has. */
std::optional<double> halfOf(const Step& step, const std::vector<Sample>& samples, double slope,
                             bool isAngle)
{
    double last = 0.0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double seconds =
            static_cast<double>(samples[i].mUtcNs - step.mBeginNs) * base::kSecondsPerNanosecond;
        const double share =
            shareOf(samples[i].mValue, step.mBefore + slope * seconds, step, isAngle);
        if (i > 0 && last < 0.5 && share >= 0.5) {
            const double before = static_cast<double>(samples[i - 1].mUtcNs - step.mBeginNs) *
                                  base::kSecondsPerNanosecond;
            return before + (seconds - before) * (0.5 - last) / (share - last);
        }
        last = share;
    }
    return std::nullopt;
}

/** The mean slope outside the step, in units per second. */
double slopeAround(const Step& step, const std::vector<Sample>& samples, bool isAngle)
{
    double change = 0.0;
    double seconds = 0.0;
    for (size_t i = 1; i < samples.size(); ++i) {
        const bool isOutside =
            samples[i].mUtcNs <= step.mBeginNs || samples[i - 1].mUtcNs >= step.mEndNs;
        if (isOutside) {
            const double difference = samples[i].mValue - samples[i - 1].mValue;
            change += isAngle ? wrapped(difference) : difference;
            seconds += static_cast<double>(samples[i].mUtcNs - samples[i - 1].mUtcNs) *
                       base::kSecondsPerNanosecond;
        }
    }
    return seconds > 0.0 ? change / seconds : 0.0;
}

/** The largest overshoot of the measured values over the expected ones, in percent of the step. */
double overshootOf(const Step& step, const std::vector<Sample>& expected,
                   const std::vector<Sample>& measured, bool isAngle)
{
    constexpr double kPercent = 100.0;
    double overshoot = 0.0;
    for (size_t i = 0, j = 0; i < expected.size(); ++i) {
        while (j < measured.size() && measured[j].mUtcNs < expected[i].mUtcNs) {
            ++j;
        }
        if (j == measured.size() || measured[j].mUtcNs != expected[i].mUtcNs) {
            continue;
        }
        const double beyond = shareOf(measured[j].mValue, expected[i].mValue, step, isAngle);
        if (expected[i].mUtcNs >= step.mEndNs) {
            overshoot = std::max(overshoot, beyond);
        } else if (expected[i].mUtcNs <= step.mBeginNs) {
            overshoot = std::max(overshoot, -beyond);
        }
    }
    return kPercent * overshoot;
}
} // namespace

double wrapped(double degrees)
{
    constexpr double kTurnDegrees = 360.0;
    return degrees - kTurnDegrees * std::floor(degrees / kTurnDegrees + 0.5);
}

std::vector<Step> findSteps(const std::vector<Sample>& samples, bool isAngle)
{
    return StepFinder(samples, isAngle).find();
}

std::optional<StepResponse> responseTo(const Step& step, const std::vector<Sample>& expected,
                                       const std::vector<Sample>& measured, bool isAngle)
{
    const std::vector<Sample> wanted = around(step, expected);
    const std::vector<Sample> found = around(step, measured);
    const double slope = slopeAround(step, wanted, isAngle);
    const auto reference = halfOf(step, wanted, slope, isAngle);
    const auto half = halfOf(step, found, slope, isAngle);
    if (!reference || !half) {
        return std::nullopt;
    }
    const double ns = *reference * base::kNanosecondsPerSecond;
    return StepResponse{step.mBeginNs + std::llround(ns), *half - *reference,
                        overshootOf(step, wanted, found, isAngle)};
}

} // namespace assess
