#pragma once

#include <complex>
#include <vector>

#include "generate/StepEnvelope.h"
#include "generate/Timeline.h"
#include "generate/WaveParameters.h"

namespace generate {

/**
 * A channel in closed form: between two steps of its course it is a sum of exponentials, the real
 * part of amplitude * exp(rate * line). Every part of a description is one or several of them: a
 * sine, a decaying oscillation, the side bands of a modulation. Sums of squares over any lines
 * follow exactly, without the samples.
 */
class ExponentialSum
{
public:
    /** Requires: problemOf(parameters) is empty. */
    ExponentialSum(const WaveParameters& parameters, const Timeline& timeline, size_t channel);

    /** Sum of the squares of the unrounded samples of the lines from begin up to end. */
    double sumOfSquares(qint64 begin, qint64 end) const;

    /** Whether every period in these lines is like the other, so that one stands for all. */
    bool isSteady(qint64 begin, qint64 end) const;

private:
    struct Exponential
    {
        std::complex<double> mAmplitude; ///< at the first line of the piece
        std::complex<double> mRate;      ///< a line
    };

    /** The lines from one step of the course to the next. */
    struct Piece
    {
        qint64 mBegin;
        qint64 mEnd;
        std::vector<Exponential> mExponentials;
        bool mIsSteady;
    };

    Piece pieceOf(qint64 begin, qint64 end) const;
    void addWave(const Fundamental& fundamental, int order, double ratio, double phase,
                 Piece& piece) const;
    void addTone(const Tone& tone, Piece& piece) const;
    std::vector<Exponential> modulated(const std::vector<Exponential>& exponentials,
                                       const Modulation& modulation, int order, qint64 begin) const;
    size_t indexOf(qint64 line) const;

    const WaveParameters& mParameters;
    const Timeline& mTimeline;
    size_t mChannel;
    std::vector<Piece> mPieces;
};

} // namespace generate
