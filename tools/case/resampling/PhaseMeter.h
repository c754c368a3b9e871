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
 * @param phases one to three columns of one length; null for a phase that is not there
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

    /** Periods that go into one measurement. Under its window, constants and harmonics vanish. */
    static constexpr int kWindowPeriods = 2;

    /** Borrows the times, which must outlive it. */
    PhaseMeter(const SampleTimes& times, ComplexSignal signal);

    /**
     * @param hz about the frequency of the fundamental; negative for what rotates backwards
     * @return nothing where the window reaches beyond the signal or holds too few samples
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
