#pragma once

#include <cmath>
#include <complex>

#include "base/Numbers.h"

namespace base {

/**
 * The window of all measurements of phase and frequency: a raised cosine over two periods. It
 * rejects DC and all harmonics. Neighbouring windows, which overlap by one period, add up to 1.
 *
 * @param x -1 to 1 over the window; 1 in its middle, 0 at its ends
 */
inline double raisedCosine(double x)
{
    return 0.5 + 0.5 * std::cos(kPi * x);
}

/** Weights of a sample in its two windows, multiplied by a rotating phasor. */
struct WindowWeights
{
    std::complex<double> mFalling; ///< in the second half of the window that ends
    std::complex<double> mRising;  ///< in the first half of the window that begins
};

/** @param phase of the phasor at the sample, in periods: 0 to 1 */
inline WindowWeights windowWeights(double phase)
{
    // The phasor from the half angle, whose cosine the window needs too.
    const double halfCos = std::cos(kPi * phase);
    const double halfSin = std::sin(kPi * phase);
    const std::complex<double> phasor(halfCos * halfCos - halfSin * halfSin,
                                      -2.0 * halfSin * halfCos);
    const double rising = 0.5 - 0.5 * halfCos;
    return {phasor * (1.0 - rising), phasor * rising};
}

} // namespace base
