#include "generate/Wave.h"
#include "base/Numbers.h"

#include <cmath>
#include <utility>

namespace generate {

namespace {

double sineOfDegrees(double degrees)
{
    return std::sin(std::fmod(degrees, 360.0) * base::kRadiansPerDegree);
}
} // namespace

Wave::Wave(WaveParameters parameters)
    : mParameters(std::move(parameters)), mTimeline(mParameters), mSteps(mParameters, mTimeline)
{
}

LineValues Wave::valuesOf(qint64 line) const
{
    LineValues values{};
    for (std::size_t channel = 0; channel < values.size(); ++channel) {
        values[channel] = valueOf(line, channel);
    }
    mParameters.mNeutral.applyTo(values);
    return values;
}

double Wave::valueOf(qint64 sample, std::size_t channel) const
{
    const Fundamental fundamental = mSteps.fundamentalAt(sample, channel);
    double amplitude = fundamental.mAmplitude;
    double phase = double(sample % kSamplesPerPeriod) + fundamental.mPhase;
    if (!mParameters.mModulations.empty()) {
        phase += modulate(sample, channel, amplitude);
    }
    double sum = sineOfDegrees(phase);
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        if (harmonic.mChannels.test(channel)) {
            sum += harmonic.mRatio * sineOfDegrees(harmonic.mOrder * phase + harmonic.mPhase);
        }
    }
    return amplitude * sum + tonesAt(sample, channel);
}

double Wave::modulate(qint64 sample, std::size_t channel, double& amplitude) const
{
    double shift = 0.0;
    const double seconds = mTimeline.secondsOf(sample);
    for (const Modulation& modulation : mParameters.mModulations) {
        if (modulation.mShape == ModulationShape::Sine && modulation.mChannels.test(channel)) {
            const double shape = std::cos(2.0 * base::kPi * modulation.mHertz * seconds);
            amplitude *= 1.0 + modulation.mDepth * shape;
            shift -= modulation.mPhaseDepth * shape / base::kRadiansPerDegree;
        }
    }
    return shift;
}

double Wave::tonesAt(qint64 sample, std::size_t channel) const
{
    double sum = 0.0;
    for (const Tone& tone : mParameters.mTones) {
        if (tone.mChannels.test(channel) && sample >= mTimeline.lineAt(tone.mStart)) {
            const double seconds = mTimeline.secondsOf(sample) - tone.mStart;
            sum += tone.mRatio * std::exp(-seconds / tone.mTimeConstant) *
                   sineOfDegrees(360.0 * tone.mHertz * seconds + tone.mPhase);
        }
    }
    return mParameters.mChannels[channel].mAmplitude * sum;
}

} // namespace generate
