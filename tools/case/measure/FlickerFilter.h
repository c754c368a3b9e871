#pragma once

#include <array>

namespace measure {

/** The reference lamp. */
enum class Lamp
{
    V230,
    V120,
};

/** A second-order filter whose states survive a change of its step. */
struct SecondOrderFilter
{
    /** Low-pass and band-pass output. */
    struct Outputs
    {
        double mLow;
        double mBand;
    };

    /** Coefficients for one step, by the trapezoidal rule; exact at the corner frequency. */
    struct Coefficients
    {
        double mFirst = 0.0;
        double mSecond = 0.0;
        double mThird = 0.0;

        Coefficients() = default;
        /** @param damping 1/Q */
        Coefficients(double radiansPerSecond, double damping, double step);
    };

    Outputs add(const Coefficients& coefficients, double value);

    double mFirstState = 0.0;
    double mSecondState = 0.0;
};

/** A first-order low-pass whose state survives a change of its step. */
struct FirstOrderFilter
{
    /** @param gain of the step, of gainFor() */
    double add(double gain, double value);

    static double gainFor(double radiansPerSecond, double step);

    double mState = 0.0;
};

/** The coefficients of all filters of a flickermeter for one step. */
struct FlickerCoefficients
{
    FlickerCoefficients(Lamp lamp, double nominalHz, double step);

    double mStep; ///< s
    double mHighPass;
    std::array<SecondOrderFilter::Coefficients, 3> mLowPass; ///< of sixth order
    SecondOrderFilter::Coefficients mWeighting;
    double mWeightingGain;
    double mLead; ///< share of the signal that passes the lag beside it
    double mLag;
    double mSecondLag;
    double mSmoothing;
    double mScale; ///< to 1 for the reference fluctuation
};

/**
 * Blocks 3 and 4 of the flickermeter of IEC 61000-4-15, for one voltage: from the square of the
 * voltage, as a ratio to that of its long-term rms, to the instantaneous flicker sensation.
 *
 * High-pass 0.05 Hz, Butterworth low-pass of sixth order (35 Hz at 50 Hz, 42 Hz at 60 Hz), the
 * weighting of lamp, eye and brain, square, and 300 ms of smoothing. The scale follows from the
 * filters in closed form: the sinusoidal fluctuation of 8.8 Hz in the standard's table (0.250 % for
 * the 230 V lamp, 0.321 % for the 120 V lamp) has a maximum of 1.
 */
class FlickerFilter
{
public:
    double add(const FlickerCoefficients& coefficients, double relativeSquare);

private:
    FirstOrderFilter mMean{1.0}; ///< of a steady voltage
    std::array<SecondOrderFilter, 3> mLowPass;
    SecondOrderFilter mWeighting;
    FirstOrderFilter mLag;
    FirstOrderFilter mSecondLag;
    FirstOrderFilter mSmoothing;
};

} // namespace measure
