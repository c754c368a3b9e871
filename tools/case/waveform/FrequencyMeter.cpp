#include "waveform/FrequencyMeter.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "base/RaisedCosine.h"
#include "base/Sums.h"

namespace waveform {

namespace {
/** With three samples in a period the second harmonic looks like the fundamental. */
constexpr size_t kMinSamplesInPeriod = 4;

/** Six periods. A jump of the phase spoils the three turns whose windows hold it: one is left. */
constexpr size_t kMinTurns = 4;

/**
 * Whether neighbouring periods may have been sampled at one rate: they differ by one sample, since
 * a period is no whole number of them, and where the clock ticks only four times a period, by all
 * samples of a tick.
 */
bool isSameRate(size_t samples, size_t before)
{
    constexpr double kShare = 0.25;
    const auto a = static_cast<double>(samples);
    const auto b = static_cast<double>(before);
    return std::abs(a - b) <= 1.0 + kShare * std::min(a, b);
}

/**
 * Steps on both sides of the median whose turns are averaged: drift and noise of up to 1.6 % of the
 * frequency are in the result, a turn that is off by more than 6 degrees is not.
 */
constexpr size_t kNeighbours = 4;
} // namespace

void FrequencyMeter::Weights::resize(size_t samples)
{
    for (std::vector<double>* weights : {&mFallingCos, &mFallingSin, &mRisingCos, &mRisingSin}) {
        weights->resize(samples);
    }
}

FrequencyMeter::FrequencyMeter(double nearHertz, size_t channels)
    : mNearHertz(nearHertz), mChannels(channels)
{
}

void FrequencyMeter::add(const SignalBlock& block)
{
    rotatePhasor(block);
    size_t begin = 0;
    while (begin < block.size()) {
        const double period = mPeriods[begin];
        size_t end = begin + 1;
        while (end < block.size() && mPeriods[end] == period) {
            ++end;
        }
        if (period != mPeriod) {
            enterPeriod(period);
        }
        addSpan(block, begin, end);
        begin = end;
    }
}

void FrequencyMeter::rotatePhasor(const SignalBlock& block)
{
    mWeights.resize(block.size());
    mPeriods.resize(block.size());
    for (size_t i = 0; i < block.size(); ++i) {
        const double turns = block.mSeconds[i] * mNearHertz;
        mPeriods[i] = std::floor(turns);
        const base::WindowWeights weights = base::windowWeights(turns - mPeriods[i]);
        mWeights.mFallingCos[i] = weights.mFalling.real();
        mWeights.mFallingSin[i] = weights.mFalling.imag();
        mWeights.mRisingCos[i] = weights.mRising.real();
        mWeights.mRisingSin[i] = weights.mRising.imag();
    }
}

/** Compares the window that has ended with the one before it. */
void FrequencyMeter::enterPeriod(double period)
{
    // A window in which the rate changes weighs its two halves differently.
    const bool isNext = period == mPeriod + 1.0 && mInPeriod >= kMinSamplesInPeriod &&
                        (mPeriodsInRow == 0 || isSameRate(mInPeriod, mInLast));
    mPeriodsInRow = isNext ? mPeriodsInRow + 1 : 0;
    // Two windows that overlap by one period have passed.
    const bool isTurn = mPeriodsInRow > 2;
    for (Channel& channel : mChannels) {
        if (isTurn) {
            const Phasor turn = channel.mEnding * std::conj(channel.mLast);
            channel.mTurns.at(stepOf(turn)) += turn;
        }
        channel.mLast = channel.mEnding;
        channel.mEnding = isNext ? channel.mBeginning : Phasor();
        channel.mBeginning = {};
    }
    mTurnSamples += isTurn ? mInPeriod : 0;
    mTurnCount += isTurn ? 1 : 0;
    mPeriod = period;
    mInLast = mInPeriod;
    mInPeriod = 0;
}

/** Index of the step that an angle belongs to. */
size_t FrequencyMeter::stepOf(const Phasor& turn)
{
    const double share = std::arg(turn) / base::kTwoPi + 0.5;
    // Values beyond the range of numbers have no angle.
    const double step = std::isfinite(share) ? share * static_cast<double>(kTurns) : 0.0;
    return std::min(static_cast<size_t>(step), kTurns - 1);
}

void FrequencyMeter::addSpan(const SignalBlock& block, size_t begin, size_t end)
{
    const size_t count = end - begin;
    for (size_t i = 0; i < mChannels.size(); ++i) {
        const double* const values = block.mValues[i].data() + begin;
        const auto weighted = [&](const std::vector<double>& weights) {
            return base::dotProduct(values, weights.data() + begin, count);
        };
        Channel& channel = mChannels[i];
        channel.mEnding += Phasor(weighted(mWeights.mFallingCos), weighted(mWeights.mFallingSin));
        channel.mBeginning += Phasor(weighted(mWeights.mRisingCos), weighted(mWeights.mRisingSin));
        channel.mSquares += base::sumOfSquares(values, count);
    }
    mInPeriod += count;
    mSamples += count;
}

FrequencyMeter::Result FrequencyMeter::result() const
{
    Result best;
    for (const Channel& channel : mChannels) {
        const Result found = resultOf(channel);
        best = found.mShare > best.mShare ? found : best;
    }
    return best;
}

FrequencyMeter::Result FrequencyMeter::resultOf(const Channel& channel) const
{
    if (mTurnCount < kMinTurns || !(channel.mSquares > 0.0)) {
        return {};
    }
    const Phasor sum = turnsAroundMedian(channel);
    // A sine of amplitude 1 has a power of 1/2 and is n/4 in a window of n samples.
    const auto turns = static_cast<double>(mTurnCount);
    const double windowSamples = 2.0 * static_cast<double>(mTurnSamples) / turns;
    const double amplitude = std::sqrt(std::abs(sum) / turns) / (windowSamples / 4.0);
    const double power = channel.mSquares / static_cast<double>(mSamples);
    return {mNearHertz * (1.0 + std::arg(sum) / base::kTwoPi), amplitude * amplitude / 2.0 / power};
}

FrequencyMeter::Phasor FrequencyMeter::turnsAroundMedian(const Channel& channel)
{
    double half = 0.0;
    for (const Phasor& turns : channel.mTurns) {
        half += std::abs(turns) / 2.0;
    }
    size_t median = 0;
    for (double sum = std::abs(channel.mTurns[0]); sum < half && median + 1 < kTurns;) {
        sum += std::abs(channel.mTurns.at(++median));
    }
    Phasor sum;
    for (size_t i = kTurns + median - kNeighbours; i <= kTurns + median + kNeighbours; ++i) {
        sum += channel.mTurns.at(i % kTurns);
    }
    return sum;
}

} // namespace waveform
