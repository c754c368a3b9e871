#pragma once

#include <vector>

#include "waveform/FrequencyMeter.h"
#include "waveform/SignalSource.h"

namespace waveform {

/**
 * Overall measures of a signal: rms, smallest and largest value of each channel, and the frequency
 * of the fundamental. Made while the signal is read, in constant memory.
 */
class Measures
{
public:
    struct Channel
    {
        double mRms = 0.0; ///< over all samples with equal weight, including DC
        double mSmallest = 0.0;
        double mLargest = 0.0;
    };

    /** Borrows the description, which must outlive it. */
    explicit Measures(const SignalDescription& description);

    void add(const SignalBlock& block);

    /** All 0 before the first sample. Requires: a channel of the description. */
    Channel channel(size_t channel) const;

    size_t samples() const { return mSamples; }

    /** From the first sample to the last, in s. */
    double seconds() const { return mSeconds; }

    /**
     * Measured where the signal is steady; 0 Hz if no channel has a fundamental for some periods.
     */
    FrequencyMeter::Result frequency() const;

private:
    struct Sums
    {
        double mSquares = 0.0;
        double mSmallest = 0.0;
        double mLargest = 0.0;
    };

    void addColumn(const std::vector<double>& column, Sums* sums) const;
    void beginMeters();

    const SignalDescription& mDescription;
    std::vector<Sums> mChannels;
    std::vector<FrequencyMeter> mMeters; ///< for possible frequencies
    size_t mSamples = 0;
    double mSeconds = 0.0;
};

/** Reads a signal to its end, with a progress line. */
void measure(SignalSource& source, Measures* measures);

} // namespace waveform
