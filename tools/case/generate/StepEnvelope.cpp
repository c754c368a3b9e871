#include "generate/StepEnvelope.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"

namespace generate {

namespace {
double linesPerChange(const WaveParameters& parameters, const Modulation& modulation)
{
    return parameters.samplesPerSecond() / (2.0 * modulation.mHertz);
}

/** The first line behind a change, which are counted from 1. */
qint64 changeAt(qint64 change, double lines)
{
    return qint64(std::ceil(double(change) * lines - 0.5));
}

/** 1 before the first change, -1 behind it, and so on. A change belongs to the nearest line. */
double rectangleAt(qint64 line, double lines)
{
    return std::fmod(std::floor((double(line) + 0.5) / lines), 2.0) == 0.0 ? 1.0 : -1.0;
}
} // namespace

StepEnvelope::StepEnvelope(const WaveParameters& parameters, const Timeline& timeline)
    : mParameters(parameters), mTimeline(timeline)
{
    for (const Disturbance& disturbance : parameters.mDisturbances) {
        mSpans.push_back({beginOf(disturbance), endOf(disturbance)});
    }
}

qint64 StepEnvelope::beginOf(const Disturbance& disturbance) const
{
    return mTimeline.lineAt(disturbance.mStart);
}

qint64 StepEnvelope::endOf(const Disturbance& disturbance) const
{
    return mTimeline.lineAt(disturbance.mStart + disturbance.mDuration);
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

std::vector<qint64> StepEnvelope::stepsOf(size_t channel) const
{
    const qint64 end = mTimeline.lineCount();
    std::vector<qint64> steps{0, end};
    for (size_t i = 0; i < mSpans.size(); ++i) {
        if (mParameters.mDisturbances[i].mChannels.test(channel)) {
            steps.push_back(std::min(mSpans[i].mBegin, end));
            steps.push_back(std::min(mSpans[i].mEnd, end));
        }
    }
    for (const Modulation& modulation : mParameters.mModulations) {
        const double lines = linesPerChange(mParameters, modulation);
        if (modulation.mShape == ModulationShape::Rectangle && modulation.mChannels.test(channel)) {
            for (qint64 change = 1; changeAt(change, lines) < end; ++change) {
                steps.push_back(changeAt(change, lines));
            }
        }
    }
    std::sort(steps.begin(), steps.end());
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    return steps;
}

} // namespace generate
