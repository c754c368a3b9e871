#include "states/StateRange.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "base/CaseError.h"

namespace states {

namespace {
double peakOf(const State& state, size_t channel)
{
    double ratio = 1.0;
    for (const StateHarmonic& harmonic :
         isCurrent(channel) ? state.mCurrentHarmonics : state.mVoltageHarmonics) {
        ratio += harmonic.mRatio;
    }
    if (state.mSwing) {
        ratio *=
            1.0 + std::abs(isCurrent(channel) ? state.mSwing->mCurrent : state.mSwing->mVoltage);
    }
    return state.mChannels[channel].mRms * std::sqrt(2.0) * ratio;
}

/** A remanence of 1 adds as much flux as switching on at 0 degrees. */
double inrushOf(const State& state, size_t channel)
{
    const bool isPhase = channel >= generate::kFirstCurrent && channel < generate::kNeutralCurrent;
    if (!state.mInrush || !isPhase) {
        return 0.0;
    }
    constexpr double kMaxFlux = 3.0;
    const Inrush& inrush = *state.mInrush;
    return inrush.mPeak * (kMaxFlux - inrush.mKnee) / (2.0 - inrush.mKnee);
}
} // namespace

void expectValuesInRange(const StatePlan& plan)
{
    generate::LineValues offsets{};
    generate::LineValues lastPeaks{};
    for (size_t number = 0; number < plan.mStates.size(); ++number) {
        const State& state = plan.mStates[number];
        generate::LineValues peaks{};
        for (size_t channel = 0; channel < peaks.size(); ++channel) {
            const ChannelWave& wave = state.mChannels[channel];
            const double peak = peakOf(state, channel) + inrushOf(state, channel);
            if (wave.mSince == number) {
                offsets[channel] = 0.0;
                if (wave.mOffset) {
                    offsets[channel] = wave.mOffset->mValue ? std::abs(*wave.mOffset->mValue)
                                                            : lastPeaks[channel] + peak;
                }
            }
            lastPeaks[channel] = peak + offsets[channel];
            const double scale = isCurrent(channel) ? plan.mCountsPerAmpere : plan.mCountsPerVolt;
            peaks[channel] = lastPeaks[channel] * scale;
        }
        plan.mNeutral.applyTo(peaks);
        for (size_t channel = 0; channel < peaks.size(); ++channel) {
            if (!(peaks[channel] <= double(std::numeric_limits<qint32>::max()))) {
                const ChannelWave& wave = state.mChannels[channel];
                throw base::CaseError(fmt::format(
                    "{}state '{}': channel {} may reach {:g} counts, the sum of the peaks of its "
                    "parts; expected at most {}, because values have 32 bits",
                    plan.messagePrefix(wave.mLocation.mLine > 0 ? wave.mLocation : state.mLocation),
                    state.mName, channel, peaks[channel], std::numeric_limits<qint32>::max()));
            }
        }
    }
}

} // namespace states
