#pragma once

#include <vector>

#include "generate/Timeline.h"
#include "generate/WaveParameters.h"

namespace generate {

/** A channel's fundamental between two changes. */
struct Fundamental
{
    double mAmplitude; ///< peak value
    double mPhase;     ///< degrees ahead of a sine that starts at the first sample
};

/**
 * Amplitude and phase of the channels' fundamentals, which disturbances and rectangular modulations
 * change in steps.
 */
class StepEnvelope
{
public:
    /** Requires: problemOf(parameters) is empty. Borrows the parameters. */
    StepEnvelope(const WaveParameters& parameters, const Timeline& timeline);

    Fundamental fundamentalAt(qint64 line, size_t channel) const;

private:
    struct Span
    {
        qint64 mBegin;
        qint64 mEnd;
    };

    const WaveParameters& mParameters;
    std::vector<Span> mSpans; ///< of the disturbances
};

} // namespace generate
