#include "measure/WindowMeter.h"

#include <cmath>

#include "base/Numbers.h"
#include "base/Sums.h"

namespace measure {

namespace {
using Phasors = std::array<std::complex<double>, kPhases>;

SequenceSquares sequencesOf(const Phasors& phases)
{
    const std::complex<double> turn = std::polar(1.0, base::kTwoPi / 3.0);
    const std::complex<double> back = std::conj(turn);
    const auto square = [&](std::complex<double> b, std::complex<double> c) {
        return std::norm((phases[0] + b * phases[1] + c * phases[2]) / 3.0);
    };
    return {square(turn, back), square(back, turn), square(1.0, 1.0)};
}
} // namespace

WindowMeter::WindowMeter(size_t periods, std::bitset<kChannelCount> channels, bool doSpectrum)
    : mPeriods(periods),
      mLength(periods * kSamplesPerPeriod),
      mChannels(channels),
      mDoSpectrum(doSpectrum),
      mTransform(mLength / 2, false),
      mSpectrum(mLength / 2)
{
}

WindowValues WindowMeter::measure(const SampleHistory& samples, size_t first)
{
    WindowValues values;
    std::array<Line, kChannelCount> fundamentals{};
    const auto samplesInWindow = static_cast<double>(mLength);
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        if (mChannels.test(channel)) {
            const double* const column = samples.valuesFrom(channel, first);
            values.mChannels[channel].mRms = base::sumOfSquares(column, mLength) / samplesInWindow;
            addSpectrum(column, &values.mChannels[channel], &fundamentals[channel]);
        }
    }
    constexpr size_t kFirstCurrentOfWindow = kChannelCount / 2;
    for (size_t phase = 0; phase < kPhases; ++phase) {
        const size_t current = kFirstCurrentOfWindow + phase;
        const Line complexPower = fundamentals[phase] * std::conj(fundamentals[current]);
        values.mPower[phase] = {
            base::dotProduct(samples.valuesFrom(phase, first), samples.valuesFrom(current, first),
                             mLength) /
                samplesInWindow,
            complexPower.imag(),
            std::sqrt(values.mChannels[phase].mRms * values.mChannels[current].mRms)};
    }
    values.mSequences = {sequencesOf({fundamentals[0], fundamentals[1], fundamentals[2]}),
                         sequencesOf({fundamentals[4], fundamentals[5], fundamentals[6]})};
    return values;
}

/** Square of the rms value of these spectral lines together. */
double WindowMeter::power(size_t firstLine, size_t lastLine) const
{
    double sum = 0.0;
    for (size_t line = firstLine; line <= lastLine; ++line) {
        sum += std::norm(mSpectrum[line]);
    }
    const auto samplesInWindow = static_cast<double>(mLength);
    return 2.0 * sum / (samplesInWindow * samplesInWindow);
}

void WindowMeter::addSpectrum(const double* values, ChannelSquares* squares, Line* fundamental)
{
    if (!mDoSpectrum) {
        return;
    }
    mTransform.transform_real(values, mSpectrum.data());
    *fundamental = mSpectrum[mPeriods] * (std::sqrt(2.0) / static_cast<double>(mLength));
    for (size_t order = 1; order <= kLastOrder; ++order) {
        const size_t line = order * mPeriods;
        squares->mHarmonics[order] = power(line - 1, line + 1);
        if (order < kLastOrder) {
            squares->mInterharmonics[order] = power(line + 2, line + mPeriods - 2);
        }
    }
}

} // namespace measure
