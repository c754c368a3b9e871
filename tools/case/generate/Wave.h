#pragma once

#include <QtGlobal>
#include <array>

#include "generate/LineSource.h"
#include "generate/StepEnvelope.h"
#include "generate/Timeline.h"
#include "generate/WaveParameters.h"

namespace generate {

/** The samples of a wave that parameters describe: one per degree of phase. */
class Wave : public LineSource
{
public:
    /** Requires: problemOf(parameters) is empty. */
    explicit Wave(WaveParameters parameters);

    const Timeline& timeline() const override { return mTimeline; }

    /** In any order. */
    LineValues read(qint64 line) override { return valuesOf(line); }
    LineValues valuesOf(qint64 line) const;

private:
    double valueOf(qint64 sample, std::size_t channel) const;

    /** Degrees that sinusoidal modulation puts the phase ahead; multiplies the amplitude. */
    double modulate(qint64 sample, std::size_t channel, double& amplitude) const;
    double tonesAt(qint64 sample, std::size_t channel) const;

    WaveParameters mParameters;
    Timeline mTimeline;
    StepEnvelope mSteps;
};

} // namespace generate
