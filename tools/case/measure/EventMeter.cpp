#include "measure/EventMeter.h"

namespace measure {

namespace {
/** Relative margin, so that a steady value at the threshold is not beyond it by rounding. */
constexpr double kRoundingMargin = 1e-5;

RmsThreshold lowerThresholdOf(const EventSettings& settings, double percent)
{
    const double unit = settings.mDeclaredVolts / 100.0 * (1.0 - kRoundingMargin);
    return {unit * percent, unit * (percent + settings.mHysteresisPercent)};
}

RmsThreshold upperThresholdOf(const EventSettings& settings, double percent)
{
    const double unit = settings.mDeclaredVolts / 100.0 * (1.0 + kRoundingMargin);
    return {unit * percent, unit * (percent - settings.mHysteresisPercent)};
}
} // namespace

EventMeter::EventMeter(const EventSettings& settings)
    : mDip(lowerThresholdOf(settings, settings.mPercents.mDip)),
      mSwell(upperThresholdOf(settings, settings.mPercents.mSwell)),
      mDips(mDip, ThresholdEvents::Together::Any,
            {QuantityId::DipResidual, QuantityId::DipDuration}),
      mSwells(mSwell, ThresholdEvents::Together::Any,
              {QuantityId::SwellMax, QuantityId::SwellDuration}),
      mInterruptions(lowerThresholdOf(settings, settings.mPercents.mInterruption),
                     ThresholdEvents::Together::All,
                     {QuantityId::InterruptionResidual, QuantityId::InterruptionDuration}),
      mRapidChanges(settings)
{
}

void EventMeter::add(const HalfPeriodValues& values, MeasurementOutput& output)
{
    const auto channel = static_cast<size_t>(values.mChannel);
    if (channel >= kEventChannelCount) {
        return;
    }
    if (mDip.isBack(values.mRms) && mSwell.isBack(values.mRms)) {
        mInService.set(channel);
    }
    const bool wasInEvent = mDips.isOpen(channel) || mSwells.isOpen(channel);
    mDips.add(values, mInService, output);
    mSwells.add(values, mInService, output);
    mInterruptions.add(values, mInService, output);
    // The period that ends an event overlaps the next one: a change in that is part of the event.
    const bool isInEvent = wasInEvent || mDips.isOpen(channel) || mSwells.isOpen(channel);
    const bool isExcluded = isInEvent || mWereInEvent.test(channel) || !mInService.test(channel);
    mRapidChanges.add(values, isExcluded, output);
    mWereInEvent.set(channel, isInEvent);
    mEndUtcNs = values.mEndUtcNs;
}

void EventMeter::finish(MeasurementOutput& output)
{
    mDips.finish(output);
    mSwells.finish(output);
    mInterruptions.finish(output);
    mRapidChanges.finish(output);
    if (mInService.any()) {
        const size_t count = mDips.systemCount() + mSwells.systemCount() +
                             mInterruptions.systemCount() + mRapidChanges.systemCount();
        output.add({mEndUtcNs, static_cast<double>(count), {QuantityId::EventCount}, Channel::U});
    }
}

} // namespace measure
