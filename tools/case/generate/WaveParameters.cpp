#include "generate/WaveParameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "SampleStep.h"
#include "generate/Timeline.h"

namespace generate {

namespace {
/** A course is stored period by period, which takes memory for each of them. */
constexpr double kMinCourseHz = 1.0;
constexpr double kMaxCourseHz = 1000.0;

constexpr double kMaximumSamples = std::numeric_limits<qint32>::max();
constexpr double kMaximumValue = std::numeric_limits<qint32>::max();

std::string problemOfFrequency(float frequency)
{
    if (isPlayableStep(sampleStepOf(frequency))) {
        return {};
    }
    return fmt::format(
        "frequency {:g} Hz: expected more than 1/360 Hz and at most 2777777 Hz, so that "
        "a 360th of a period is at least 1 ns and less than 1 s",
        frequency);
}

std::string problemOfDuration(const WaveParameters& parameters)
{
    auto hertz = double(parameters.mFrequency);
    for (const FrequencyPoint& point : parameters.mCourse) {
        hertz = std::max(hertz, point.mHertz);
    }
    const double periods = parameters.mDuration * hertz;
    if (!(periods >= 0.5)) {
        return fmt::format("duration {:g} s: expected at least one period of {:g} s",
                           parameters.mDuration, 1.0 / hertz);
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
    if (harmonic.mOrder < 2 || harmonic.mOrder > kMaxOrder) {
        return fmt::format("harmonic of order {}: expected an order from 2 to {}", harmonic.mOrder,
                           kMaxOrder);
    }
    return {};
}

/** Half a sample is tolerated, because decimal times are rounded: 0.1 s + 0.2 s is beyond 0.3 s. */
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

/**
 * Modulations and tones are computed from the sample number, so the sampling rate must be constant.
 */
std::string problemOfCourse(const WaveParameters& parameters)
{
    if (!parameters.mModulations.empty() || !parameters.mTones.empty()) {
        return "modulation or tone with a changing frequency: expected a constant one";
    }
    for (const FrequencyPoint& point : parameters.mCourse) {
        if (!(point.mHertz >= kMinCourseHz && point.mHertz <= kMaxCourseHz)) {
            return fmt::format("frequency {:g} Hz: expected {} to {} Hz where it changes",
                               point.mHertz, kMinCourseHz, kMaxCourseHz);
        }
    }
    return {};
}

std::string problemOfModulation(const Modulation& modulation, const WaveParameters& parameters)
{
    const double max = parameters.samplesPerSecond() / 4.0;
    if (!(modulation.mHertz > 0.0 && modulation.mHertz <= max)) {
        return fmt::format("modulation with {:g} Hz: expected more than 0 Hz and at most {:g} Hz",
                           modulation.mHertz, max);
    }
    if (!(std::abs(modulation.mDepth) <= 1.0 &&
          std::abs(modulation.mPhaseDepth) <= kMaxPhaseDepth)) {
        return fmt::format("modulation by {:g} and {:g} rad: expected at most 1 and {:g} rad",
                           modulation.mDepth, modulation.mPhaseDepth, kMaxPhaseDepth);
    }
    return {};
}

std::string problemOfTone(const Tone& tone, const WaveParameters& parameters)
{
    const double max = parameters.samplesPerSecond() / 2.0;
    if (!(tone.mHertz >= 0.0 && tone.mHertz < max)) {
        return fmt::format(
            "tone of {:g} Hz: expected 0 Hz or more and less than {:g} Hz, half of "
            "the samples in a second",
            tone.mHertz, max);
    }
    if (!(tone.mStart >= 0.0 && tone.mStart < parameters.mDuration && tone.mTimeConstant > 0.0)) {
        return fmt::format(
            "tone from {:g} s with a time constant of {:g} s: expected a beginning "
            "within {:g} s and a time constant above 0 s",
            tone.mStart, tone.mTimeConstant, parameters.mDuration);
    }
    return {};
}

/** Upper bound of the channel's values: the sum of the peaks of all its components. */
double largestValue(const WaveParameters& parameters, std::size_t channel)
{
    double factor = 1.0;
    double sum = 1.0;
    double tones = 0.0;
    for (const Harmonic& harmonic : parameters.mHarmonics) {
        sum += harmonic.mChannels.test(channel) ? std::abs(harmonic.mRatio) : 0.0;
    }
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        factor *= disturbance.mChannels.test(channel) ? std::max(1.0, disturbance.mFactor) : 1.0;
    }
    for (const Modulation& modulation : parameters.mModulations) {
        factor *= modulation.mChannels.test(channel) ? 1.0 + std::abs(modulation.mDepth) : 1.0;
    }
    for (const Tone& tone : parameters.mTones) {
        tones += tone.mChannels.test(channel) ? std::abs(tone.mRatio) : 0.0;
    }
    return std::abs(parameters.mChannels[channel].mAmplitude) * (factor * sum + tones);
}

std::string problemOfValues(const WaveParameters& parameters)
{
    LineValues values{};
    for (std::size_t channel = 0; channel < values.size(); ++channel) {
        values[channel] = largestValue(parameters, channel);
    }
    parameters.mNeutral.applyTo(values);
    for (std::size_t channel = 0; channel < values.size(); ++channel) {
        if (!(values[channel] <= kMaximumValue)) {
            return fmt::format(
                "channel {} can reach {:g}: expected at most {:.0f}, values have 32 bits", channel,
                values[channel], kMaximumValue);
        }
    }
    return {};
}

/** The first problem of the parts, or an empty text. */
template <typename Parts, typename Judge>
std::string firstProblem(const Parts& parts, Judge judge)
{
    for (const auto& part : parts) {
        std::string problem = judge(part);
        if (!problem.empty()) {
            return problem;
        }
    }
    return {};
}

std::string problemOfParts(const WaveParameters& parameters)
{
    const Timeline timeline(parameters);
    const double duration = timeline.endSeconds();
    const double halfSample = 0.5 / parameters.samplesPerSecond();
    std::string problem = firstProblem(parameters.mHarmonics, problemOfHarmonic);
    if (problem.empty()) {
        problem = firstProblem(parameters.mDisturbances, [&](const Disturbance& disturbance) {
            return problemOfDisturbance(disturbance, duration, halfSample);
        });
    }
    if (problem.empty()) {
        problem = firstProblem(parameters.mModulations, [&](const Modulation& modulation) {
            return problemOfModulation(modulation, parameters);
        });
    }
    if (problem.empty()) {
        problem = firstProblem(parameters.mTones,
                               [&](const Tone& tone) { return problemOfTone(tone, parameters); });
    }
    return problem;
}

/** A remark if a frequency has an incomplete cycle at the end of the file; otherwise empty. */
std::string seamOf(const char* what, double hertz, double seconds)
{
    constexpr double kTolerance = 1e-6; // of a cycle
    const double cycles = hertz * seconds;
    if (std::abs(cycles - std::round(cycles)) <= kTolerance) {
        return {};
    }
    return fmt::format(
        "{} of {:g} Hz: {:g} cycles in {:g} s; played over and over, it jumps where the file ends",
        what, hertz, cycles, seconds);
}
} // namespace

std::vector<std::string> seamsOf(const WaveParameters& parameters)
{
    const double seconds = Timeline(parameters).endSeconds();
    std::vector<std::string> seams;
    const auto add = [&seams](std::string seam) {
        if (!seam.empty() && (seams.empty() || seams.back() != seam)) {
            seams.push_back(std::move(seam));
        }
    };
    for (const Modulation& modulation : parameters.mModulations) {
        add(seamOf("modulation", modulation.mHertz, seconds));
    }
    for (const Tone& tone : parameters.mTones) {
        if (std::isinf(tone.mTimeConstant)) {
            add(seamOf("tone", tone.mHertz, seconds));
        }
    }
    return seams;
}

std::string problemOf(const WaveParameters& parameters)
{
    std::string problem = problemOfFrequency(parameters.mFrequency);
    if (problem.empty()) {
        problem = problemOfDuration(parameters);
    }
    if (problem.empty() && !parameters.mCourse.empty()) {
        problem = problemOfCourse(parameters);
    }
    if (problem.empty()) {
        problem = problemOfParts(parameters);
    }
    return problem.empty() ? problemOfValues(parameters) : problem;
}

} // namespace generate
