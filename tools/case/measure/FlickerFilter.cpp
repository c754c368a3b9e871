#include "measure/FlickerFilter.h"

#include <cmath>
#include <complex>

#include "base/Numbers.h"

namespace measure {

namespace {
constexpr double kHighPassHz = 0.05;
constexpr double kSmoothingSeconds = 0.3;
constexpr double kReferenceHz = 8.8;

/** Twice the cosines of the poles of a Butterworth filter of sixth order. */
constexpr std::array<double, 3> kButterworthDampings{0.517638090205042, 1.414213562373095,
                                                     1.931851652578137};

/** The weighting filter with the standard's names; frequencies in Hz, and the gain k. */
struct Weighting
{
    double mGain;
    double mLambda;
    double mOmega1;
    double mOmega2;
    double mOmega3;
    double mOmega4;
    double mReferencePercent; ///< fluctuation at kReferenceHz, peak to peak
};

constexpr Weighting kLamp230{1.74802, 4.05981, 9.15494, 2.27979, 1.22535, 21.9, 0.250};
constexpr Weighting kLamp120{1.6357, 4.167375, 9.077169, 2.939902, 1.394468, 17.31512, 0.321};

const Weighting& weightingOf(Lamp lamp)
{
    return lamp == Lamp::V230 ? kLamp230 : kLamp120;
}

double lowPassHz(double nominalHz)
{
    return nominalHz < 55.0 ? 35.0 : 42.0;
}

/** Gain of all filters before the square, in closed form. */
double gainAt(const Weighting& weighting, double nominalHz, double hz)
{
    const std::complex<double> s(0.0, hz);
    std::complex<double> gain = s / (s + kHighPassHz);
    const std::complex<double> scaled = s / lowPassHz(nominalHz);
    for (const double damping : kButterworthDampings) {
        gain /= scaled * scaled + damping * scaled + 1.0;
    }
    gain *= weighting.mGain * weighting.mOmega1 * s /
            (s * s + 2.0 * weighting.mLambda * s + weighting.mOmega1 * weighting.mOmega1);
    gain *= (1.0 + s / weighting.mOmega2) /
            ((1.0 + s / weighting.mOmega3) * (1.0 + s / weighting.mOmega4));
    return std::abs(gain);
}

/** Peak of the squared and smoothed reference fluctuation, before scaling. */
double referenceLevel(const Weighting& weighting, double nominalHz)
{
    // The relative fluctuation of the squared voltage is twice that of the voltage.
    const double peak =
        weighting.mReferencePercent / 100.0 * gainAt(weighting, nominalHz, kReferenceHz);
    const double ripple =
        1.0 / std::hypot(1.0, base::kTwoPi * 2.0 * kReferenceHz * kSmoothingSeconds);
    return peak * peak / 2.0 * (1.0 + ripple);
}
} // namespace

SecondOrderFilter::Coefficients::Coefficients(double radiansPerSecond, double damping, double step)
{
    const double g = std::tan(radiansPerSecond * step / 2.0);
    mFirst = 1.0 / (1.0 + g * (g + damping));
    mSecond = g * mFirst;
    mThird = g * mSecond;
}

SecondOrderFilter::Outputs SecondOrderFilter::add(const Coefficients& coefficients, double value)
{
    const double difference = value - mSecondState;
    const double band = coefficients.mFirst * mFirstState + coefficients.mSecond * difference;
    const double low =
        mSecondState + coefficients.mSecond * mFirstState + coefficients.mThird * difference;
    mFirstState = 2.0 * band - mFirstState;
    mSecondState = 2.0 * low - mSecondState;
    return {low, band};
}

double FirstOrderFilter::gainFor(double radiansPerSecond, double step)
{
    const double g = std::tan(radiansPerSecond * step / 2.0);
    return g / (1.0 + g);
}

double FirstOrderFilter::add(double gain, double value)
{
    const double rise = gain * (value - mState);
    const double low = mState + rise;
    mState = low + rise;
    return low;
}

FlickerCoefficients::FlickerCoefficients(Lamp lamp, double nominalHz, double step) : mStep(step)
{
    const Weighting& weighting = weightingOf(lamp);
    const auto lag = [step](double hz) {
        return FirstOrderFilter::gainFor(base::kTwoPi * hz, step);
    };
    mHighPass = lag(kHighPassHz);
    for (size_t i = 0; i < mLowPass.size(); ++i) {
        mLowPass[i] = {base::kTwoPi * lowPassHz(nominalHz), kButterworthDampings[i], step};
    }
    mWeighting = {base::kTwoPi * weighting.mOmega1, 2.0 * weighting.mLambda / weighting.mOmega1,
                  step};
    mWeightingGain = weighting.mGain;
    mLead = weighting.mOmega3 / weighting.mOmega2;
    mLag = lag(weighting.mOmega3);
    mSecondLag = lag(weighting.mOmega4);
    mSmoothing = FirstOrderFilter::gainFor(1.0 / kSmoothingSeconds, step);
    mScale = 1.0 / referenceLevel(weighting, nominalHz);
}

double FlickerFilter::add(const FlickerCoefficients& coefficients, double relativeSquare)
{
    double value = relativeSquare - mMean.add(coefficients.mHighPass, relativeSquare);
    for (size_t i = 0; i < mLowPass.size(); ++i) {
        value = mLowPass[i].add(coefficients.mLowPass[i], value).mLow;
    }
    value = coefficients.mWeightingGain * mWeighting.add(coefficients.mWeighting, value).mBand;
    const double lagging = mLag.add(coefficients.mLag, value);
    value = coefficients.mLead * value + (1.0 - coefficients.mLead) * lagging;
    value = mSecondLag.add(coefficients.mSecondLag, value);
    return mSmoothing.add(coefficients.mSmoothing, coefficients.mScale * value * value);
}

} // namespace measure
