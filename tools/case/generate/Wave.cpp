#include "generate/Wave.h"

#include <cmath>
#include <utility>

namespace {
constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;

double sineOfDegrees(double degrees)
{
    return std::sin(std::fmod(degrees, 360.0) * kRadiansPerDegree);
}
} // namespace

Wave::Wave(WaveParameters parameters)
    : mParameters(std::move(parameters)),
      mSampleCount(mParameters.periodCount() * kSamplesPerPeriod)
{
}

double Wave::timeOf(qint64 sample) const
{
    return double(sample) / (double(mParameters.mFrequency) * kSamplesPerPeriod);
}

Wave::Values Wave::valuesOf(qint64 sample) const
{
    Values values{};
    for (std::size_t channel = 0; channel < values.size(); ++channel) {
        values[channel] = qint32(std::lround(valueOf(sample, channel)));
    }
    return values;
}

double Wave::valueOf(qint64 sample, std::size_t channel) const
{
    double amplitude = mParameters.mChannels[channel].mAmplitude;
    double phase = double(sample % kSamplesPerPeriod) + mParameters.mChannels[channel].mPhase;
    for (const Disturbance& disturbance : mParameters.mDisturbances) {
        if (disturbance.mChannels.test(channel) && isDisturbed(sample, disturbance)) {
            amplitude *= disturbance.mFactor;
            phase += disturbance.mPhaseJump;
        }
    }
    double sum = sineOfDegrees(phase);
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        if (harmonic.mChannels.test(channel)) {
            sum += harmonic.mRatio * sineOfDegrees(harmonic.mOrder * phase + harmonic.mPhase);
        }
    }
    return amplitude * sum;
}

bool Wave::isDisturbed(qint64 sample, const Disturbance& disturbance) const
{
    const double samplesPerSecond = double(mParameters.mFrequency) * kSamplesPerPeriod;
    const double end = disturbance.mStart + disturbance.mDuration;
    return sample >= std::llround(disturbance.mStart * samplesPerSecond) &&
           sample < std::llround(end * samplesPerSecond);
}
