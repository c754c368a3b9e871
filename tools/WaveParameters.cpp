#include "WaveParameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
constexpr float kNanosecondsPerSecond = 1e9F;
constexpr double kMaximumSamples = std::numeric_limits<qint32>::max();
constexpr double kMaximumValue = std::numeric_limits<qint32>::max();

QString problemOfFrequency(float frequency)
{
    // In single precision, because that is how the simulator finds its step.
    const float step = (kNanosecondsPerSecond / frequency) / float(kSamplesPerPeriod);
    if (frequency > 0.0F && step >= 1.0F && step < kNanosecondsPerSecond) {
        return {};
    }
    return QString(
               "frequency %1 Hz: expected more than 1/360 Hz and at most 2777777 Hz, so that "
               "a 360th of a period is at least 1 ns and less than 1 s")
        .arg(double(frequency));
}

QString problemOfDuration(const WaveParameters& parameters)
{
    const double periods = parameters.mDuration * double(parameters.mFrequency);
    if (!(periods >= 0.5)) {
        return QString("duration %1 s: expected at least one period of %2 s")
            .arg(parameters.mDuration)
            .arg(1.0 / double(parameters.mFrequency));
    }
    if (std::round(periods) * kSamplesPerPeriod > kMaximumSamples) {
        return QString("duration %1 s: this is %2 samples, expected at most %3")
            .arg(parameters.mDuration)
            .arg(std::round(periods) * kSamplesPerPeriod, 0, 'f', 0)
            .arg(kMaximumSamples, 0, 'f', 0);
    }
    return {};
}

QString problemOfHarmonic(const Harmonic& harmonic)
{
    if (harmonic.mOrder < 2 || harmonic.mOrder > kMaximumOrder) {
        return QString("harmonic of order %1: expected an order from 2 to %2")
            .arg(harmonic.mOrder)
            .arg(kMaximumOrder);
    }
    return {};
}

/** Half a sample is left for the rounding of decimal times: 0.1 s + 0.2 s is beyond 0.3 s. */
QString problemOfDisturbance(const Disturbance& disturbance, double caseDuration, double halfSample)
{
    const double end = disturbance.mStart + disturbance.mDuration;
    if (disturbance.mStart < 0.0 || disturbance.mDuration <= 0.0 ||
        end > caseDuration + halfSample) {
        return QString(
                   "disturbance from %1 s to %2 s: expected to lie between 0 s and the end of "
                   "the wave at %3 s")
            .arg(disturbance.mStart)
            .arg(end)
            .arg(caseDuration);
    }
    if (disturbance.mFactor < 0.0) {
        return QString("disturbance with amplitude factor %1: expected 0 or more")
            .arg(disturbance.mFactor);
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

QString problemOfValues(const WaveParameters& parameters)
{
    for (std::size_t channel = 0; channel < parameters.mChannels.size(); ++channel) {
        const double value = largestValue(parameters, channel);
        if (!(value <= kMaximumValue)) {
            return QString("channel %1 can reach %2: expected at most %3, values have 32 bits")
                .arg(channel)
                .arg(value)
                .arg(kMaximumValue, 0, 'f', 0);
        }
    }
    return {};
}
} // namespace

qint64 WaveParameters::periodCount() const
{
    return std::llround(mDuration * double(mFrequency));
}

QString problemOf(const WaveParameters& parameters)
{
    QString problem = problemOfFrequency(parameters.mFrequency);
    if (problem.isEmpty()) {
        problem = problemOfDuration(parameters);
    }
    if (!problem.isEmpty()) {
        return problem;
    }
    for (const Harmonic& harmonic : parameters.mHarmonics) {
        problem = problemOfHarmonic(harmonic);
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    const double duration = double(parameters.periodCount()) / double(parameters.mFrequency);
    const double halfSample = 0.5 / (kSamplesPerPeriod * double(parameters.mFrequency));
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        problem = problemOfDisturbance(disturbance, duration, halfSample);
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    return problemOfValues(parameters);
}
