#include "states/StateSignal.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"

namespace states {

namespace {
double sineOfDegrees(double degrees)
{
    return std::sin(std::fmod(degrees, 360.0) * base::kRadiansPerDegree);
}

double cosineOfDegrees(double degrees)
{
    return std::cos(std::fmod(degrees, 360.0) * base::kRadiansPerDegree);
}

double scaleOf(const StatePlan& plan, size_t channel)
{
    return isCurrent(channel) ? plan.mCountsPerAmpere : plan.mCountsPerVolt;
}
} // namespace

StateSignal::StateSignal(const StatePlan& plan, const StateLayout& layout)
    : mPlan(plan), mLayout(layout), mOffsets(plan.mStates.size())
{
    for (size_t state = 0; state < plan.mStates.size(); ++state) {
        const qint64 begin = layout.beginOf(state);
        for (size_t channel = 0; channel < kChannelCount; ++channel) {
            const ChannelWave& wave = plan.mStates[state].mChannels[channel];
            if (wave.mSince != state || !wave.mOffset) {
                continue;
            }
            if (wave.mOffset->mValue) {
                mOffsets[state][channel] = *wave.mOffset->mValue * scaleOf(plan, channel);
                continue;
            }
            const double before = state == 0 ? 0.0 : valueAt(state - 1, channel, begin);
            mOffsets[state][channel] = before - valueAt(state, channel, begin); // still without it
        }
    }
}

generate::LineValues StateSignal::read(qint64 line)
{
    while (line >= mLayout.beginOf(mState + 1)) {
        ++mState;
    }
    const State& state = mPlan.mStates[mState];
    generate::LineValues values{};
    for (size_t channel = 0; channel < values.size(); ++channel) {
        values[channel] = valueAt(mState, channel, line);
    }
    saturate(state, line, values);
    mPlan.mNeutral.applyTo(values);
    return values;
}

double StateSignal::secondsSince(size_t state, qint64 line) const
{
    return mLayout.timeline().secondsOf(line) -
           mLayout.timeline().secondsOf(mLayout.beginOf(state));
}

double StateSignal::amplitudeOf(const State& state, size_t channel, double swing) const
{
    double amplitude = state.mChannels[channel].mRms * std::sqrt(2.0) * scaleOf(mPlan, channel);
    if (state.mSwing) {
        amplitude *=
            1.0 + swing * (isCurrent(channel) ? state.mSwing->mCurrent : state.mSwing->mVoltage);
    }
    return amplitude;
}

/** The value without the effect of the current transformer. */
double StateSignal::valueAt(size_t state, size_t channel, qint64 line) const
{
    return waveAt(state, channel, line) + offsetAt(state, channel, line) +
           inrushAt(state, channel, line);
}

/** The fundamental with its harmonics. */
double StateSignal::waveAt(size_t number, size_t channel, qint64 line) const
{
    const State& state = mPlan.mStates[number];
    if (state.mChannels[channel].mRms == 0.0) {
        return 0.0;
    }
    double swing = 0.0;
    double phase = double(line % kSamplesPerPeriod) + state.mChannels[channel].mDegrees;
    if (state.mSwing) {
        swing =
            sineOfDegrees(360.0 * state.mSwing->mHertz * secondsSince(state.mSwing->mSince, line));
        phase += isCurrent(channel) ? state.mSwing->mDegrees * swing : 0.0;
    }
    double sum = sineOfDegrees(phase);
    for (const StateHarmonic& harmonic :
         isCurrent(channel) ? state.mCurrentHarmonics : state.mVoltageHarmonics) {
        sum += harmonic.mRatio * sineOfDegrees(harmonic.mOrder * phase + harmonic.mDegrees);
    }
    return amplitudeOf(state, channel, swing) * sum;
}

double StateSignal::offsetAt(size_t number, size_t channel, qint64 line) const
{
    const ChannelWave& wave = mPlan.mStates[number].mChannels[channel];
    if (!wave.mOffset) {
        return 0.0;
    }
    return mOffsets[wave.mSince][channel] *
           std::exp(-secondsSince(wave.mSince, line) / wave.mOffset->mTau);
}

/**
 * The flux is the integral of the voltage; its DC component decays. A current flows above the knee.
 */
double StateSignal::inrushAt(size_t state, size_t channel, qint64 line) const
{
    const bool isPhase = channel >= generate::kFirstCurrent && channel < generate::kNeutralCurrent;
    if (!mPlan.mStates[state].mInrush || !isPhase) {
        return 0.0;
    }
    const Inrush& inrush = *mPlan.mStates[state].mInrush;
    const size_t phase = channel - generate::kFirstCurrent;
    const qint64 begin = mLayout.beginOf(inrush.mSince);
    const double decay = std::exp(-secondsSince(inrush.mSince, line) / inrush.mTau);
    const double degrees = mPlan.mStates[inrush.mSince].mChannels[phase].mDegrees;
    const double flux =
        (inrush.mRemanence[phase] + cosineOfDegrees(double(begin % kSamplesPerPeriod) + degrees)) *
            decay -
        cosineOfDegrees(double(line % kSamplesPerPeriod) + degrees);
    const double excess = std::max(0.0, std::abs(flux) - inrush.mKnee);
    constexpr double kMaxFlux = 2.0; // switched on at 0 degrees
    return std::copysign(excess, flux) / (kMaxFlux - inrush.mKnee) * inrush.mPeak *
           mPlan.mCountsPerAmpere;
}

/** The part of the current that would drive the flux beyond the knee does not reach the burden. */
void StateSignal::saturate(const State& state, qint64 line, generate::LineValues& values)
{
    if (!state.mSaturation) {
        return;
    }
    const Saturation& transformer = *state.mSaturation;
    const double kneeFlux = std::sqrt(2.0) * transformer.mKnee / (2.0 * base::kPi * mPlan.mHertz);
    if (line == mLayout.beginOf(transformer.mSince)) {
        mFlux.mVoltSeconds.fill(transformer.mRemanence * kneeFlux);
    }
    const double seconds = 1.0 / (double(timeline().frequencyOf(line)) * kSamplesPerPeriod);
    const double fluxOfCount = transformer.mBurden * seconds / mPlan.mCountsPerAmpere;
    for (size_t phase = 0; phase < generate::kPhaseCount; ++phase) {
        double& current = values[generate::kFirstCurrent + phase];
        double& flux = mFlux.mVoltSeconds[phase];
        const double next = std::clamp(flux + current * fluxOfCount, -kneeFlux, kneeFlux);
        current = (next - flux) / fluxOfCount;
        flux = next;
    }
}

} // namespace states
