#pragma once

#include <kissfft/kissfft.hh>

#include <bitset>
#include <complex>
#include <vector>

#include "measure/SampleHistory.h"
#include "measure/WindowValues.h"

namespace measure {

/**
 * Measures a window of 10 or 12 whole periods of 360 samples: its spectrum has a line every 5 Hz.
 * A harmonic subgroup is the line of the harmonic with its two neighbours, a centred interharmonic
 * subgroup the lines between two harmonics without these neighbours.
 */
class WindowMeter
{
public:
    /** @param doSpectrum false if only rms and active power are needed */
    WindowMeter(size_t periods, std::bitset<kChannelCount> channels, bool doSpectrum);

    /** In samples. */
    size_t length() const { return mLength; }

    /** Requires: the samples reach that far. */
    WindowValues measure(const SampleHistory& samples, size_t first);

private:
    using Line = std::complex<double>;

    void addSpectrum(const double* values, ChannelSquares* squares, Line* fundamental);
    double power(size_t firstLine, size_t lastLine) const;

    size_t mPeriods;
    size_t mLength;
    std::bitset<kChannelCount> mChannels;
    bool mDoSpectrum;
    kissfft<double> mTransform;
    std::vector<Line> mSpectrum; ///< lines below half the sampling rate
};

} // namespace measure
