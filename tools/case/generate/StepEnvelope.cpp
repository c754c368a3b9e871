#include "generate/StepEnvelope.h"

#include <cmath>

#include "base/Numbers.h"

namespace generate {

namespace {
double linesPerChange(const WaveParameters& parameters, const Modulation& modulation)
{
    return parameters.samplesPerSecond() / (2.0 * modulation.mHertz);
}

/** 1 before the first change, -1 after it, and so on. A change belongs to the nearest line. */
double rectangleAt(qint64 line, double lines)
{
    return std::fmod(std::floor((double(line) + 0.5) / lines), 2.0) == 0.0 ? 1.0 : -1.0;
}
} // namespace

StepEnvelope::StepEnvelope(const WaveParameters& parameters, const Timeline& timeline)
    : mParameters(parameters)
{
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        mSpans.push_back({timeline.lineAt(disturbance.mStart),
                          timeline.lineAt(disturbance.mStart + disturbance.mDuration)});
    }
}

Fundamental StepEnvelope::fundamentalAt(qint64 line, size_t channel) const
{
    Fundamental fundamental{mParameters.mChannels[channel].mAmplitude,
                            mParameters.mChannels[channel].mPhase};
    for (size_t i = 0; i < mSpans.size(); ++i) {
        const Disturbance& disturbance = mParameters.mDisturbances[i];
        if (disturbance.mChannels.test(channel) && line >= mSpans[i].mBegin &&
            line < mSpans[i].mEnd) {
            fundamental.mAmplitude *= disturbance.mFactor;
            fundamental.mPhase += disturbance.mPhaseJump;
        }
    }
    for (const Modulation& modulation : mParameters.mModulations) {
        if (modulation.mShape == ModulationShape::Rectangle && modulation.mChannels.test(channel)) {
            const double shape = rectangleAt(line, linesPerChange(mParameters, modulation));
            fundamental.mAmplitude *= 1.0 + modulation.mDepth * shape;
            fundamental.mPhase -= modulation.mPhaseDepth * shape / base::kRadiansPerDegree;
        }
    }
    return fundamental;
}

} // namespace generate
