#pragma once

#include <complex>
#include <optional>
#include <vector>

#include "resampling/SampleTimes.h"

namespace resampling {

using ComplexSignal = std::vector<std::complex<double>>;

/**
 * The positive sequence of three phases, sample by sample: a balanced system becomes one phasor
 * that rotates with its frequency.
 * @param phases one to three columns of equal length; null for a missing phase
 */
ComplexSignal positiveSequence(const std::vector<const std::vector<double>*>& phases);

/** Measures the fundamental of a signal around an instant. */
class PhaseMeter
{
public:
    struct Phasor
    {
        double mAmplitude; ///< in the unit of the signal
        double mCycles;    ///< phase at the instant, -0.5 to 0.5
    };

    /** Periods of one window. It rejects constants and harmonics. */
    static constexpr int kWindowPeriods = 2;

    /** Borrows the times, which must outlive it. */
    PhaseMeter(const SampleTimes& times, ComplexSignal signal);

    /**
     * @param hz approximate frequency of the fundamental; negative for backward rotation
     * @return no value if the window reaches beyond the signal or has too few samples
     */
    std::optional<Phasor> measure(double seconds, double hz) const;

    double rms() const { return mRms; } ///< of the whole signal
    double begin() const { return mSeconds.front(); }
    double end() const { return mSeconds.back(); }

private:
    double spanOf(size_t sample) const;

    std::vector<double> mSeconds;
    ComplexSignal mSignal;
    double mRms = 0.0;
};

} // namespace resampling
