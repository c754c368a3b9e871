#pragma once

#include <array>
#include <complex>
#include <optional>
#include <vector>

#include "measure/Demodulator.h"
#include "measure/PhasorWindow.h"

namespace measure {

/** The values of a frame. Magnitudes are rms values; angles refer to a cosine on UTC. */
struct PhasorFrame
{
    std::array<std::complex<double>, kPhasorCount> mPhases; ///< UA, UB, UC, IA, IB, IC
    std::complex<double> mPositiveVoltage;
    std::complex<double> mPositiveCurrent;
    std::optional<double> mHz; ///< none without a positive sequence, as the next one
    std::optional<double> mHzPerSecond;
};

/**
 * The phasors at an instant: the windowed signal at the nominal frequency, corrected for the
 * response of the window to a steady phasor of the measured frequency.
 *
 * The correction is that of the reference model of class P, but exact and for both classes. The
 * gain of the window at the deviation from the nominal frequency, and the image at the negative
 * frequency, are computed from the same samples. So a steady fundamental is exact at any frequency
 * that passes the window, at any position of the samples. For harmonics off the nominal frequency,
 * modulation, ramps and steps, the response is that of the class.
 *
 * Frequency and its rate are the first and second difference of the angle of the positive
 * sequence, over one step of the reference model on either side. The positive sequence is that of
 * the voltages, or that of the currents if the voltages have none.
 */
class PhasorEstimator
{
public:
    /** The positive sequences of voltages and currents, in V and A, below which there is no
     * frequency. */
    struct MinSequences
    {
        double mVolts;
        double mAmperes;
    };

    PhasorEstimator(PhasorWindow window, double nominalHz, MinSequences minSequences);

    /** Time in s before and after an instant that must be covered by groups. */
    double reach() const { return mWindow.halfWidth() + mWindow.step(); }

    /** Requires: the groups cover the reach around the instant. */
    PhasorFrame frameAt(const std::vector<DemodulatedGroup>& groups, double seconds);

private:
    using Complex = std::complex<double>;
    static constexpr size_t kCentreCount = 3;
    static constexpr size_t kMiddle = 1;

    /** The sums under the window around one instant: a step before, at, or after the frame's. */
    struct Centre
    {
        std::array<double, 2 * kPhasorCount> mSums{};
        Complex mGain;  ///< of a phasor at the measured frequency
        Complex mImage; ///< what its conjugate leaves
    };

    void sumUp(const std::vector<DemodulatedGroup>& groups, double seconds);
    void clearGains();
    bool setGains(double deviation);
    std::optional<size_t> firstOfReference() const;
    double findDeviation(size_t first);
    double deviationNow(size_t first) const;
    Complex phaseAt(const Centre& centre, size_t phase) const;
    Complex positiveAt(const Centre& centre, size_t first) const;

    PhasorWindow mWindow;
    double mNominalHz;
    MinSequences mMinSequences;

    /** Of the present frame. */
    std::array<Centre, kCentreCount> mCentres;
    const DemodulatedGroup* mFirstGroup = nullptr;
    double mSeconds = 0.0;
    double mTotal = 0.0;                                    ///< weight of all samples
    std::vector<std::array<double, kCentreCount>> mWeights; ///< of each group
};

} // namespace measure
