#include "waveform/FrequencyMeter.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "base/RaisedCosine.h"
#include "base/Sums.h"

namespace waveform {

namespace {
/** With three samples per period, the second harmonic looks like the fundamental. */
constexpr size_t kMinSamplesInPeriod = 4;

/** Six periods: fewer do not give a reliable frequency. */
constexpr size_t kMinTurns = 4;

/**
 * Max relative difference of the amplitude between windows of a steady run without noise. Slow
 * power swings stay below.
 */
constexpr double kMaxAmplitudeChange = 0.02;

/**
 * Max difference between turns, in radians. The image of a fundamental that is 10 % off moves the
 * phase in such a window by up to 0.25 degrees, a turn by 0.5, and the difference of two turns by 1
 * degree.
 */
constexpr double kMaxTurnChange = 1.5 * base::kRadiansPerDegree;

/**
 * Noise widens both limits: 5 medians of the change from turn to turn are hardly ever exceeded. The
 * widest limit is four times as wide, 6 degrees.
 */
constexpr double kMediansOfNoise = 5.0;
constexpr double kMaxWidening = 4.0;

/** The median is tracked in steps of this factor, starting at the smallest value. */
constexpr double kMedianStep = 1.25;
constexpr double kMinMedian = 0.05 * base::kRadiansPerDegree;

/** With a smaller share of its power in the fundamental, a run counts as having none. */
constexpr double kMinShare = 0.1;

/** A share below this part of another share is clearly less pure. */
constexpr double kClearlyLess = 0.9;

/** Assumed resolution of turns, in radians, so that no short run is the best by chance. */
constexpr double kTurnResolution = 0.002 * base::kRadiansPerDegree;

double wrapped(double radians)
{
    return std::remainder(radians, base::kTwoPi);
}

/**
 * Whether adjacent periods may have the same sampling rate. They may differ by one sample, since a
 * period is not a whole number of samples, and with a clock of only four ticks per period by all
 * samples of a tick.
 */
bool isSameRate(size_t samples, size_t before)
{
    constexpr double kShare = 0.25;
    const auto a = static_cast<double>(samples);
    const auto b = static_cast<double>(before);
    return std::abs(a - b) <= 1.0 + kShare * std::min(a, b);
}
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
            extendRun(&channel);
        } else {
            channel.mBest = betterOf(channel.mBest, resultOf(channel.mRun));
            channel.mRun = {};
        }
        channel.mLast = channel.mEnding;
        channel.mEnding = isNext ? channel.mBeginning : Phasor();
        channel.mBeginning = {};
        channel.mSquares = 0.0;
    }
    mPeriod = period;
    mInLast = mInPeriod;
    mInPeriod = 0;
}

/** Extends the run by the ended window; begins a new run if that window differs too much. */
void FrequencyMeter::extendRun(Channel* channel) const
{
    const double amplitude = std::abs(channel->mEnding);
    const double change = std::abs(amplitude - std::abs(channel->mLast));
    const double turn = std::arg(channel->mEnding * std::conj(channel->mLast));
    Run& run = channel->mRun;
    const double turnChange = std::abs(wrapped(turn - run.mLastTurn));
    const double widening =
        std::clamp(kMediansOfNoise * channel->mChange / kMaxTurnChange, 1.0, kMaxWidening);
    if (run.mTurns > 0) {
        const double step = turnChange > channel->mChange ? kMedianStep : 1.0 / kMedianStep;
        channel->mChange = std::max(channel->mChange * step, kMinMedian);
    }
    // Values that are not finite are not steady.
    const bool isSteady = amplitude > 0.0 && change <= widening * kMaxAmplitudeChange * amplitude;
    const bool isLikeLast = turnChange <= widening * kMaxTurnChange;
    if (run.mTurns == 0 || !isSteady || !isLikeLast) {
        channel->mBest = betterOf(channel->mBest, resultOf(run));
        run = {};
        run.mFirstPeriod = mPeriod;
        run.mFirstTurn = turn;
    }
    if (!isSteady) {
        return;
    }
    const double difference = wrapped(turn - run.mFirstTurn);
    run.mSum += difference;
    run.mSumOfSquares += difference * difference;
    run.mAmplitudes += amplitude;
    run.mSquares += channel->mSquares;
    run.mSamples += mInPeriod;
    run.mLastTurn = turn;
    run.mLastPeriod = mPeriod;
    ++run.mTurns;
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
}

FrequencyMeter::Result FrequencyMeter::result() const
{
    Result best;
    for (const Channel& channel : mChannels) {
        best = betterOf(best, betterOf(channel.mBest, resultOf(channel.mRun)));
    }
    return best;
}

FrequencyMeter::Result FrequencyMeter::betterOf(const Result& a, const Result& b)
{
    if (a.mShare < kClearlyLess * b.mShare || b.mShare < kClearlyLess * a.mShare) {
        return a.mShare < b.mShare ? b : a;
    }
    return b.mHertz > 0.0 && b.mError < a.mError ? b : a;
}

FrequencyMeter::Result FrequencyMeter::resultOf(const Run& run) const
{
    if (run.mTurns < kMinTurns || !(run.mSquares > 0.0)) {
        return {};
    }
    const auto turns = static_cast<double>(run.mTurns);
    const auto samples = static_cast<double>(run.mSamples);
    // A sine of amplitude 1 has a power of 1/2 and is n/2 in a window of two periods of n samples.
    const double amplitude = run.mAmplitudes / (samples / 2.0);
    const double share = amplitude * amplitude / 2.0 / (run.mSquares / samples);
    if (!(share >= kMinShare)) {
        return {};
    }
    const double mean = run.mSum / turns;
    const double scatter = std::sqrt(std::max(run.mSumOfSquares / turns - mean * mean, 0.0));
    const double hertzPerRadian = mNearHertz / base::kTwoPi;
    return {mNearHertz + wrapped(run.mFirstTurn + mean) * hertzPerRadian, share,
            (scatter + kTurnResolution) / turns * hertzPerRadian,
            std::max(run.mFirstPeriod - 2.0, 0.0) / mNearHertz,
            (run.mLastPeriod + 1.0) / mNearHertz};
}

} // namespace waveform
