#include "measure/FlickerMeter.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"

namespace measure {

namespace {
constexpr double kAdaptorSeconds = 27.3;
constexpr double kSettlingSeconds = 30.0;

/** The filters work on the mean of the squares over this time. */
constexpr double kGroupSeconds = 0.5e-3;

constexpr double kMaxFlickerStepPeriods = 0.25;

/** Lower voltages, as a part of the nominal one, cannot light a lamp. */
constexpr double kMinVoltage = 1e-3;

/** Relative difference up to which two sample steps count as equal. */
constexpr double kSameStep = 1e-6;
} // namespace

std::optional<double> VoltageAdaptor::add(double meanSquare, double step)
{
    mSum += meanSquare * step;
    mSeconds += step;
    if (mSeconds + step / 2.0 >= mHalfPeriod) {
        const double rms = std::max(mMinRms, std::sqrt(mSum / mSeconds));
        mCount += 1.0;
        const double share = std::max(1.0 / mCount, 1.0 - std::exp(-mSeconds / kAdaptorSeconds));
        mRms += share * (rms - mRms);
        mSum = 0.0;
        mSeconds = 0.0;
    }
    return mCount > 0.0 ? std::optional(meanSquare / (mRms * mRms)) : std::nullopt;
}

FlickerMeter::FlickerMeter(const MeterSettings& settings, Lamp lamp)
    : mSettings(settings), mLamp(lamp)
{
}

void FlickerMeter::add(const waveform::SignalBlock& block, MeasurementOutput& output)
{
    for (size_t i = 0; i < block.size(); ++i) {
        const double seconds = block.mSeconds[i];
        const double step = seconds - mLast;
        if (mVoltages.empty() || step * mSettings.mNominalHz > kMaxFlickerStepPeriods) {
            restart(seconds, output);
            continue;
        }
        mLast = seconds;
        if (mInGroup == 0) {
            mGroupSize = std::max<size_t>(
                1, static_cast<size_t>(kGroupSeconds * (1.0 + kSameStep) / std::max(step, 1e-9)));
        }
        for (size_t channel = 0; channel < kVoltageCount; ++channel) {
            const double value = block.mValues[channel][i];
            mVoltages[channel].mSquares += value * value;
        }
        if (++mInGroup >= mGroupSize) {
            endGroup(seconds, output);
        }
    }
}

void FlickerMeter::finish(MeasurementOutput& output)
{
    endTick(output);
}

/** Restarts, as if the signal began with this sample. */
void FlickerMeter::restart(double seconds, MeasurementOutput& output)
{
    endTick(output);
    const double minRms = std::max(1e-9, kMinVoltage * mSettings.mNominalVolts);
    mVoltages.clear();
    for (size_t i = 0; i < kVoltageCount; ++i) {
        mVoltages.push_back({{mSettings.mNominalHz, minRms}, {}, {}});
    }
    mBegin = seconds;
    mLast = seconds;
    mGroupBegin = seconds;
    mInGroup = 0;
    mTick = -1;
}

void FlickerMeter::endGroup(double seconds, MeasurementOutput& output)
{
    const double step = seconds - mGroupBegin;
    const auto count = static_cast<double>(mInGroup);
    mInGroup = 0;
    mGroupBegin = seconds;
    if (!mCoefficients || std::abs(mCoefficients->mStep - step) > kSameStep * step) {
        mCoefficients.emplace(mLamp, mSettings.mNominalHz, step);
    }
    const qint64 utcNs =
        mSettings.mBeginUtcNs + std::llround(seconds * base::kNanosecondsPerSecond);
    const qint64 tick = utcNs / FlickerLevels::kTickNs;
    if (tick != mTick) {
        endTick(output);
        mTick = seconds - mBegin >= kSettlingSeconds ? tick : -1;
    }
    for (size_t channel = 0; channel < kVoltageCount; ++channel) {
        Voltage& voltage = mVoltages[channel];
        const auto ratio = voltage.mAdaptor.add(voltage.mSquares / count, step);
        voltage.mSquares = 0.0;
        if (ratio) {
            mLevels[channel] = voltage.mFilter.add(*mCoefficients, *ratio);
            mLargest[channel] = std::max(mLargest[channel], mLevels[channel]);
        }
    }
}

/** At the end of the samples the open tick counts as whole: they are not aligned to it. */
void FlickerMeter::endTick(MeasurementOutput& output)
{
    const qint64 end = (mTick + 1) * FlickerLevels::kTickNs;
    for (size_t channel = 0; channel < kVoltageCount && mTick >= 0; ++channel) {
        if (!mSettings.mChannels.test(channel)) {
            continue;
        }
        const FlickerValues values =
            mVoltages[channel].mLevels.add(mTick, mLevels[channel], mLargest[channel]);
        const auto put = [&](QuantityId id, const std::optional<double>& value) {
            if (value) {
                output.add({end, *value, {id}, deviceChannel(channel)});
            }
        };
        put(QuantityId::InstantaneousFlicker, values.mInstantaneous);
        put(QuantityId::ShortFlicker, values.mShortTerm);
        put(QuantityId::LongFlicker, values.mLongTerm);
    }
    mLargest = {};
}

} // namespace measure
