#include "waveform/FrequencyMeter.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace waveform {

namespace {

/** Fewer samples in a period say nothing of its phase. */
constexpr size_t kFewestSamples = 4;

/** Fewer turns than in six periods say little, above all where there is a fault. */
constexpr size_t kFewestTurns = 4;

/** Whether neighbouring periods have about as many samples; a coarse clock shifts some. */
bool isSameRate(size_t samples, size_t before)
{
    constexpr double kShare = 0.25;
    const auto a = static_cast<double>(samples);
    const auto b = static_cast<double>(before);
    return std::abs(a - b) <= 1.0 + kShare * std::min(a, b);
}

/** Steps on both sides of the median that belong to it. */
constexpr size_t kNeighbours = 4;

/** In four sums, which the compiler keeps beside one another. */
double product(const double* a, const double* b, size_t count)
{
    std::array<double, 4> sums{};
    size_t i = 0;
    for (; i + sums.size() <= count; i += sums.size()) {
        for (size_t lane = 0; lane < sums.size(); ++lane) {
            sums[lane] += a[i + lane] * b[i + lane];
        }
    }
    for (; i < count; ++i) {
        sums[0] += a[i] * b[i];
    }
    return sums[0] + sums[1] + sums[2] + sums[3];
}
} // namespace

void FrequencyMeter::Weights::resize(size_t samples)
{
    for (std::vector<double>* weights :
         {&mEndingCos, &mEndingSin, &mBeginningCos, &mBeginningSin}) {
        weights->resize(samples);
    }
}

FrequencyMeter::FrequencyMeter(double nearHertz, size_t channels)
    : mNearHertz(nearHertz), mChannels(channels)
{
}

void FrequencyMeter::add(const SignalBlock& block)
{
    turnPointer(block);
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
        addStretch(block, begin, end);
        begin = end;
    }
}

/** The windows are raised cosines, of which both halves together are 1 at any time. */
void FrequencyMeter::turnPointer(const SignalBlock& block)
{
    mWeights.resize(block.size());
    mPeriods.resize(block.size());
    for (size_t i = 0; i < block.size(); ++i) {
        const double turns = block.mSeconds[i] * mNearHertz;
        mPeriods[i] = std::floor(turns);
        const double half = base::kPi * (turns - mPeriods[i]);
        const double halfCos = std::cos(half);
        const double halfSin = std::sin(half);
        const double cosine = halfCos * halfCos - halfSin * halfSin;
        const double sine = -2.0 * halfSin * halfCos;
        const double beginning = 0.5 - 0.5 * halfCos;
        mWeights.mBeginningCos[i] = cosine * beginning;
        mWeights.mBeginningSin[i] = sine * beginning;
        mWeights.mEndingCos[i] = cosine * (1.0 - beginning);
        mWeights.mEndingSin[i] = sine * (1.0 - beginning);
    }
}

/** The window that has ended is compared with the one before it. */
void FrequencyMeter::enterPeriod(double period)
{
    // A window in which the rate changes weighs its two halves differently.
    const bool isNext = period == mPeriod + 1.0 && mInPeriod >= kFewestSamples &&
                        (mPeriodsInRow == 0 || isSameRate(mInPeriod, mInLast));
    mPeriodsInRow = isNext ? mPeriodsInRow + 1 : 0;
    // Two windows that overlap by one period have passed.
    const bool isTurn = mPeriodsInRow > 2;
    for (Channel& channel : mChannels) {
        if (isTurn) {
            const Phasor turn = channel.mEnding * std::conj(channel.mLast);
            channel.mTurns.at(placeOf(turn)) += turn;
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

/** Which of the steps an angle belongs to. */
size_t FrequencyMeter::placeOf(const Phasor& turn)
{
    const double share = std::arg(turn) / (2.0 * base::kPi) + 0.5;
    // Values beyond all measure have no angle.
    const double place = std::isfinite(share) ? share * static_cast<double>(kTurns) : 0.0;
    return std::min(static_cast<size_t>(place), kTurns - 1);
}

void FrequencyMeter::addStretch(const SignalBlock& block, size_t begin, size_t end)
{
    const size_t count = end - begin;
    for (size_t i = 0; i < mChannels.size(); ++i) {
        const double* const values = block.mValues[i].data() + begin;
        Channel& channel = mChannels[i];
        channel.mEnding += Phasor(product(values, mWeights.mEndingCos.data() + begin, count),
                                  product(values, mWeights.mEndingSin.data() + begin, count));
        channel.mBeginning += Phasor(product(values, mWeights.mBeginningCos.data() + begin, count),
                                     product(values, mWeights.mBeginningSin.data() + begin, count));
        channel.mSquares += product(values, values, count);
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
    if (mTurnCount < kFewestTurns || !(channel.mSquares > 0.0)) {
        return {};
    }
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
    // A sine of amplitude 1 has a power of 1/2 and is n/4 in a window of n samples.
    const auto turns = static_cast<double>(mTurnCount);
    const double windowSamples = 2.0 * static_cast<double>(mTurnSamples) / turns;
    const double amplitude = std::sqrt(std::abs(sum) / turns) / (windowSamples / 4.0);
    const double power = channel.mSquares / static_cast<double>(mSamples);
    return {mNearHertz * (1.0 + std::arg(sum) / (2.0 * base::kPi)),
            amplitude * amplitude / 2.0 / power};
}

} // namespace waveform
