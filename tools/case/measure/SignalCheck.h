#pragma once

#include <array>
#include <complex>
#include <string>
#include <vector>

#include "measure/VoltageLevels.h"
#include "waveform/SignalSource.h"

namespace measure {

/**
 * Looks for probable mistakes: a nominal voltage that does not fit the signal, a reversed phase
 * sequence. A period is always 360 lines, so its values are rough if the frequency is not that of
 * the file. They are for remarks only.
 */
class SignalCheck
{
public:
    explicit SignalCheck(double nominalVolts) : mNominalVolts(nominalVolts) {}

    /** Takes the next lines. */
    void add(const waveform::SignalBlock& block);

    /** For the user. */
    std::vector<std::string> remarks() const;

private:
    static constexpr size_t kPhases = 3;

    /** One phase of the current period. */
    struct Phase
    {
        double mSquares = 0.0;
        std::complex<double> mFundamental; ///< times 360
    };

    /** Voltages or currents. */
    struct System
    {
        std::array<Phase, kPhases> mPhases;
        size_t mPeriods = 0; ///< that are not 0
        size_t mReversed = 0;
    };

    void addLines(const waveform::SignalBlock& block, size_t begin, size_t end);
    void endPeriod();

    double mNominalVolts;
    size_t mLine = 0; ///< in the period
    std::array<System, 2> mSystems;
    std::array<VoltageLevels, kPhases> mLevels;
};

} // namespace measure
