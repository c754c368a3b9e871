#include "measure/PhasorEstimator.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"

namespace measure {

namespace {
constexpr size_t kVoltages = 0;
constexpr size_t kCurrents = 3;

/** Min gain of the window, relative to the nominal frequency, down to which it is corrected. */
constexpr double kMinGain = 0.5;

constexpr int kMaxPasses = 5;
constexpr double kSameDeviation = 1e-6; ///< rad/s

/** e^(j rate t) at rising times, mostly equally spaced. */
class RotatingPhasor
{
public:
    explicit RotatingPhasor(double rate) : mRate(rate) {}

    const std::complex<double>& at(double seconds)
    {
        const double step = seconds - mSeconds;
        if (mLeft == 0) {
            mLeft = kTurnsBeforeExact;
            mValue = std::polar(1.0, mRate * seconds);
        } else {
            if (std::abs(step - mStep) > kSameStep) {
                mStep = step;
                mTurn = std::polar(1.0, mRate * step);
            }
            mValue = {mValue.real() * mTurn.real() - mValue.imag() * mTurn.imag(),
                      mValue.real() * mTurn.imag() + mValue.imag() * mTurn.real()};
            --mLeft;
        }
        mSeconds = seconds;
        return mValue;
    }

private:
    static constexpr int kTurnsBeforeExact = 32;
    static constexpr double kSameStep = 1e-10; ///< s

    double mRate;
    double mSeconds = 0.0;
    double mStep = 0.0;
    int mLeft = 0;
    std::complex<double> mTurn{1.0, 0.0};
    std::complex<double> mValue;
};
} // namespace

PhasorEstimator::PhasorEstimator(PhasorWindow window, double nominalHz, MinSequences minSequences)
    : mWindow(std::move(window)), mNominalHz(nominalHz), mMinSequences(minSequences)
{
}

PhasorFrame PhasorEstimator::frameAt(const std::vector<DemodulatedGroup>& groups, double seconds)
{
    sumUp(groups, seconds);
    PhasorFrame frame;
    if (const auto first = firstOfReference()) {
        frame.mHz = mNominalHz + findDeviation(*first) / base::kTwoPi;
        const Complex middle = positiveAt(mCentres[kMiddle], *first);
        const double bend = std::arg(positiveAt(mCentres.back(), *first) / middle) +
                            std::arg(positiveAt(mCentres.front(), *first) / middle);
        frame.mHzPerSecond = bend / (base::kTwoPi * mWindow.step() * mWindow.step());
    } else {
        setGains(0.0);
    }
    for (size_t phase = 0; phase < kPhasorCount; ++phase) {
        frame.mPhases[phase] = phaseAt(mCentres[kMiddle], phase);
    }
    frame.mPositiveVoltage = positiveAt(mCentres[kMiddle], kVoltages);
    frame.mPositiveCurrent = positiveAt(mCentres[kMiddle], kCurrents);
    return frame;
}

void PhasorEstimator::sumUp(const std::vector<DemodulatedGroup>& groups, double seconds)
{
    const auto isBefore = [](const DemodulatedGroup& group, double time) {
        return group.mSeconds < time;
    };
    const auto first = std::lower_bound(groups.begin(), groups.end(), seconds - reach(), isBefore);
    const auto last = std::lower_bound(first, groups.end(), seconds + reach(), isBefore);
    mFirstGroup = &*first;
    mSeconds = seconds;
    mTotal = 0.0;
    mCentres = {};
    mWeights.resize(static_cast<size_t>(last - first));
    for (size_t i = 0; i < mWeights.size(); ++i) {
        const DemodulatedGroup& group = mFirstGroup[i];
        const double delay = group.mSeconds - seconds;
        for (size_t c = 0; c < kCentreCount; ++c) {
            const double shift = (static_cast<double>(c) - kMiddle) * mWindow.step();
            const double weight = mWindow.at(delay - shift);
            mWeights[i][c] = weight;
            for (size_t j = 0; j < group.mSums.size(); ++j) {
                mCentres[c].mSums[j] += weight * group.mSums[j];
            }
        }
        mTotal += mWeights[i][kMiddle] * group.mWeight;
    }
    clearGains();
}

/** Sets the gains for the nominal frequency, without an image. */
void PhasorEstimator::clearGains()
{
    for (Centre& centre : mCentres) {
        centre.mGain = mTotal;
        centre.mImage = 0.0;
    }
}

/**
 * Sets gain and image for a phasor whose frequency deviates from the nominal one.
 * @param deviation in rad/s
 * @return false if the gain of the window is too small
 */
bool PhasorEstimator::setGains(double deviation)
{
    std::array<Complex, kCentreCount> gains{};
    std::array<Complex, kCentreCount> images{};
    RotatingPhasor phasor(deviation);
    for (size_t i = 0; i < mWeights.size(); ++i) {
        const DemodulatedGroup& group = mFirstGroup[i];
        const Complex& turn = phasor.at(group.mSeconds - mSeconds);
        // A group is so short that its low-pass is well described by a parabola.
        const double weight = group.mWeight * (1.0 - 0.5 * deviation * deviation * group.mSpread);
        const Complex direct = weight * turn;
        const Complex image(group.mImage.real() * turn.real() + group.mImage.imag() * turn.imag(),
                            group.mImage.imag() * turn.real() - group.mImage.real() * turn.imag());
        for (size_t c = 0; c < kCentreCount; ++c) {
            gains[c] += mWeights[i][c] * direct;
            images[c] += mWeights[i][c] * image;
        }
    }
    for (size_t c = 0; c < kCentreCount; ++c) {
        const double shift = (static_cast<double>(c) - kMiddle) * mWindow.step();
        const Complex back = std::polar(1.0, -deviation * shift);
        mCentres[c].mGain = gains[c] * back;
        mCentres[c].mImage = images[c] * std::conj(back);
    }
    return std::abs(mCentres[kMiddle].mGain) >= kMinGain * mTotal;
}

/** The first phase of the system that gives the frequency; none without a positive sequence. */
std::optional<size_t> PhasorEstimator::firstOfReference() const
{
    if (std::abs(positiveAt(mCentres[kMiddle], kVoltages)) > mMinSequences.mVolts) {
        return kVoltages;
    }
    if (std::abs(positiveAt(mCentres[kMiddle], kCurrents)) > mMinSequences.mAmperes) {
        return kCurrents;
    }
    return std::nullopt;
}

/** The deviation of the frequency in rad/s; sets the gains for it. */
double PhasorEstimator::findDeviation(size_t first)
{
    double deviation = deviationNow(first);
    for (int pass = 0; pass < kMaxPasses; ++pass) {
        if (!setGains(deviation)) {
            clearGains();
            return deviationNow(first);
        }
        const double next = deviationNow(first);
        if (std::abs(next - deviation) < kSameDeviation) {
            return next;
        }
        deviation = next;
    }
    return deviation;
}

double PhasorEstimator::deviationNow(size_t first) const
{
    const Complex turn =
        positiveAt(mCentres.back(), first) * std::conj(positiveAt(mCentres.front(), first));
    return std::arg(turn) / (2.0 * mWindow.step());
}

PhasorEstimator::Complex PhasorEstimator::phaseAt(const Centre& centre, size_t phase) const
{
    const Complex sum =
        std::sqrt(2.0) * Complex(centre.mSums[2 * phase], centre.mSums[2 * phase + 1]);
    return (sum * std::conj(centre.mGain) - std::conj(sum) * centre.mImage) /
           (std::norm(centre.mGain) - std::norm(centre.mImage));
}

PhasorEstimator::Complex PhasorEstimator::positiveAt(const Centre& centre, size_t first) const
{
    static const Complex kTurn = std::polar(1.0, base::kTwoPi / 3.0);
    return (phaseAt(centre, first) + kTurn * phaseAt(centre, first + 1) +
            std::conj(kTurn) * phaseAt(centre, first + 2)) /
           3.0;
}

} // namespace measure
