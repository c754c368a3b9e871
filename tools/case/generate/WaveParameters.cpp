#include "generate/WaveParameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr float kNanosecondsPerSecond = 1e9F;
constexpr double kMaximumSamples = std::numeric_limits<qint32>::max();
constexpr double kMaximumValue = std::numeric_limits<qint32>::max();

std::string problemOfFrequency(float frequency)
{
    // In single precision, because that is how the simulator finds its step.
    const float step = (kNanosecondsPerSecond / frequency) / float(kSamplesPerPeriod);
    if (frequency > 0.0F && step >= 1.0F && step < kNanosecondsPerSecond) {
        return {};
    }
    return fmt::format(
        "frequency {:g} Hz: expected more than 1/360 Hz and at most 2777777 Hz, so that "
        "a 360th of a period is at least 1 ns and less than 1 s",
        frequency);
}

std::string problemOfDuration(const WaveParameters& parameters)
{
    const double periods = parameters.mDuration * double(parameters.mFrequency);
    if (!(periods >= 0.5)) {
        return fmt::format("duration {:g} s: expected at least one period of {:g} s",
                           parameters.mDuration, 1.0 / double(parameters.mFrequency));
    }
    if (std::round(periods) * kSamplesPerPeriod > kMaximumSamples) {
        return fmt::format("duration {:g} s: this is {:.0f} samples, expected at most {:.0f}",
                           parameters.mDuration, std::round(periods) * kSamplesPerPeriod,
                           kMaximumSamples);
    }
    return {};
}

std::string problemOfHarmonic(const Harmonic& harmonic)
{
    if (harmonic.mOrder < 2 || harmonic.mOrder > kMaximumOrder) {
        return fmt::format("harmonic of order {}: expected an order from 2 to {}", harmonic.mOrder,
                           kMaximumOrder);
    }
    return {};
}

/** Half a sample is left for the rounding of decimal times: 0.1 s + 0.2 s is beyond 0.3 s. */
std::string problemOfDisturbance(const Disturbance& disturbance, double caseDuration,
                                 double halfSample)
{
    const double end = disturbance.mStart + disturbance.mDuration;
    if (disturbance.mStart < 0.0 || disturbance.mDuration <= 0.0 ||
        end > caseDuration + halfSample) {
        return fmt::format(
            "disturbance from {:g} s to {:g} s: expected to lie between 0 s and the end of "
            "the wave at {:g} s",
            disturbance.mStart, end, caseDuration);
    }
    if (disturbance.mFactor < 0.0) {
        return fmt::format("disturbance with amplitude factor {:g}: expected 0 or more",
                           disturbance.mFactor);
    }
    return {};
}

/** The largest value that the channel could reach if all its parts had their peaks together. */
double largestValue(const WaveParameters& parameters, std::size_t channel)
{
    double peak = std::abs(parameters.mChannels[channel].mAmplitude);
    double sum = 1.0;
    for (const Harmonic& harmonic : parameters.mHarmonics) {
        sum += harmonic.mChannels.test(channel) ? std::abs(harmonic.mRatio) : 0.0;
    }
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        peak *= disturbance.mChannels.test(channel) ? std::max(1.0, disturbance.mFactor) : 1.0;
    }
    return peak * sum;
}

std::string problemOfValues(const WaveParameters& parameters)
{
    for (std::size_t channel = 0; channel < parameters.mChannels.size(); ++channel) {
        const double value = largestValue(parameters, channel);
        if (!(value <= kMaximumValue)) {
            return fmt::format(
                "channel {} can reach {:g}: expected at most {:.0f}, values have 32 bits", channel,
                value, kMaximumValue);
        }
    }
    return {};
}
} // namespace

qint64 WaveParameters::periodCount() const
{
    return std::llround(mDuration * double(mFrequency));
}

std::string problemOf(const WaveParameters& parameters)
{
    std::string problem = problemOfFrequency(parameters.mFrequency);
    if (problem.empty()) {
        problem = problemOfDuration(parameters);
    }
    if (!problem.empty()) {
        return problem;
    }
    for (const Harmonic& harmonic : parameters.mHarmonics) {
        problem = problemOfHarmonic(harmonic);
        if (!problem.empty()) {
            return problem;
        }
    }
    const double duration = double(parameters.periodCount()) / double(parameters.mFrequency);
    const double halfSample = 0.5 / (kSamplesPerPeriod * double(parameters.mFrequency));
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        problem = problemOfDisturbance(disturbance, duration, halfSample);
        if (!problem.empty()) {
            return problem;
        }
    }
    return problemOfValues(parameters);
}
