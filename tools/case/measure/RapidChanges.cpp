#include "measure/RapidChanges.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace measure {

std::optional<SteadyVoltage::Change> SteadyVoltage::add(const HalfPeriodValues& values)
{
    if (mLast.size() <= mCount) {
        mLast.push_back(values);
    } else {
        mLast[mNext] = values;
    }
    mNext = (mNext + 1) % (mCount + 1);
    if (mLast.size() <= mCount) {
        return std::nullopt;
    }
    if (mBeginUtcNs) {
        mLargest = std::max(mLargest, std::abs(values.mRms - mBefore));
    }
    const double before = mMean;
    const bool wasSteady = mIsSteady;
    updateMean();
    mIsSteady = isSteadyWithin(wasSteady ? mThreshold : mThreshold / 2.0);
    if (wasSteady && !mIsSteady) {
        mBefore = before;
        mBeginUtcNs = values.mBeginUtcNs;
        mLargest = std::abs(values.mRms - before);
    } else if (!wasSteady && mIsSteady && mBeginUtcNs) {
        const Change change{*mBeginUtcNs, std::max(*mBeginUtcNs, oldest().mBeginUtcNs), mLargest,
                            std::abs(mMean - mBefore)};
        mBeginUtcNs.reset();
        return change;
    }
    return std::nullopt;
}

void SteadyVoltage::updateMean()
{
    double sum = -oldest().mRms;
    for (const HalfPeriodValues& each : mLast) {
        sum += each.mRms;
    }
    mMean = sum / static_cast<double>(mCount);
}

bool SteadyVoltage::isSteadyWithin(double volts) const
{
    return std::all_of(mLast.begin(), mLast.end(), [&](const HalfPeriodValues& each) {
        return &each == &oldest() || std::abs(each.mRms - mMean) <= volts;
    });
}

RapidChanges::RapidChanges(const EventSettings& settings)
    : mQueue({QuantityId::RapidChangeMax, QuantityId::RapidChangeDuration,
              QuantityId::RapidChangeSteady})
{
    const auto halfPeriodsInSecond = static_cast<size_t>(std::lround(2.0 * settings.mNominalHz));
    const double threshold = settings.mDeclaredVolts * settings.mRapidChangePercent / 100.0;
    mVoltages.assign(kEventChannelCount, SteadyVoltage(halfPeriodsInSecond, threshold));
}

void RapidChanges::add(const HalfPeriodValues& values, bool isExcluded, MeasurementOutput& output)
{
    const auto channel = static_cast<size_t>(values.mChannel);
    SteadyVoltage& voltage = mVoltages[channel];
    const bool wasChanging = voltage.changingSince().has_value();
    const auto change = voltage.add(values);
    const auto begin = voltage.changingSince();
    mExcluded.set(channel, (wasChanging && mExcluded.test(channel)) || isExcluded);
    if (begin && !mSystem) {
        mSystem = SteadyVoltage::Change{*begin, *begin, 0.0, 0.0};
        mIsSystemExcluded = false;
    }
    if (begin || change) {
        mIsSystemExcluded = mIsSystemExcluded || mExcluded.test(channel);
    }
    if (change) {
        takeIntoSystem(*change);
        if (!mExcluded.test(channel)) {
            mQueue.add({values.mChannel, change->mBeginUtcNs, change->mEndUtcNs, change->mLargest,
                        change->mSteadyChange});
        }
    }
    if (!mQueue.isEmpty()) {
        mQueue.outputUpTo(firstOpen(), output);
    }
}

void RapidChanges::finish(MeasurementOutput& output)
{
    mQueue.outputUpTo(std::numeric_limits<qint64>::max(), output);
}

/** Ends the change of the three-phase system with the last change of its voltages. */
void RapidChanges::takeIntoSystem(const SteadyVoltage::Change& change)
{
    mSystem->mEndUtcNs = std::max(mSystem->mEndUtcNs, change.mEndUtcNs);
    mSystem->mLargest = std::max(mSystem->mLargest, change.mLargest);
    mSystem->mSteadyChange = std::max(mSystem->mSteadyChange, change.mSteadyChange);
    const bool isContinued = std::any_of(mVoltages.begin(), mVoltages.end(), [](const auto& each) {
        return each.changingSince().has_value();
    });
    if (isContinued) {
        return;
    }
    if (!mIsSystemExcluded) {
        mQueue.add({Channel::U, mSystem->mBeginUtcNs, mSystem->mEndUtcNs, mSystem->mLargest,
                    mSystem->mSteadyChange});
    }
    mSystem.reset();
}

qint64 RapidChanges::firstOpen() const
{
    qint64 first = mSystem ? mSystem->mBeginUtcNs : std::numeric_limits<qint64>::max();
    for (const SteadyVoltage& voltage : mVoltages) {
        first = std::min(first, voltage.changingSince().value_or(first));
    }
    return first;
}

} // namespace measure
