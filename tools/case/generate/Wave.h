#pragma once

#include <QtGlobal>
#include <array>

#include "generate/StepEnvelope.h"
#include "generate/Timeline.h"
#include "generate/WaveParameters.h"

namespace generate {

/** The samples of a wave: one per degree of phase, computed when asked for. */
class Wave
{
public:
    using Values = std::array<qint32, kChannelCount>;

    /** Requires: problemOf(parameters) is empty. */
    explicit Wave(WaveParameters parameters);
    Wave(const Wave&) = delete;
    Wave& operator=(const Wave&) = delete;

    const Timeline& timeline() const { return mTimeline; }

    /** The values of all channels, rounded to the nearest integer. */
    Values valuesOf(qint64 sample) const;

    /** The value before it is rounded. */
    double valueOf(qint64 sample, std::size_t channel) const;

private:
    /** Degrees that sinusoidal modulation puts the phase ahead; multiplies the amplitude. */
    double modulate(qint64 sample, std::size_t channel, double& amplitude) const;
    double tonesAt(qint64 sample, std::size_t channel) const;

    WaveParameters mParameters;
    Timeline mTimeline;
    StepEnvelope mSteps;
};

} // namespace generate
