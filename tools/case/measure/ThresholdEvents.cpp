#include "measure/ThresholdEvents.h"

#include <algorithm>
#include <limits>

namespace measure {

void ThresholdEvents::add(const HalfPeriodValues& values, EventChannels inService,
                          MeasurementOutput& output)
{
    const auto channel = static_cast<size_t>(values.mChannel);
    std::optional<OpenEvent>& open = mOpen[channel];
    if (!open && inService.test(channel) && mThreshold.isBeyond(values.mRms)) {
        open = OpenEvent{values.mBeginUtcNs, values.mRms};
    } else if (open && mThreshold.isBack(values.mRms)) {
        close(open, values.mChannel, values.mEndUtcNs);
    } else if (open) {
        open->mExtreme = mThreshold.extremeOf(open->mExtreme, values.mRms);
    }
    updateSystem(values, isSystemBeyond(inService));
    if (!mQueue.isEmpty()) {
        qint64 firstOpen = mSystem ? mSystem->mBeginUtcNs : std::numeric_limits<qint64>::max();
        for (const auto& each : mOpen) {
            firstOpen = each ? std::min(firstOpen, each->mBeginUtcNs) : firstOpen;
        }
        mQueue.outputUpTo(firstOpen, output);
    }
}

void ThresholdEvents::finish(MeasurementOutput& output)
{
    for (size_t channel = 0; channel < mOpen.size(); ++channel) {
        close(mOpen[channel], deviceChannel(channel), std::nullopt);
    }
    close(mSystem, Channel::U, std::nullopt);
    mQueue.outputUpTo(std::numeric_limits<qint64>::max(), output);
}

bool ThresholdEvents::isSystemBeyond(EventChannels inService) const
{
    EventChannels beyond;
    for (size_t channel = 0; channel < mOpen.size(); ++channel) {
        beyond.set(channel, mOpen[channel].has_value());
    }
    return mTogether == Together::Any ? beyond.any() : beyond.any() && beyond == inService;
}

/** @param isBeyond whether the system is beyond the threshold after these values */
void ThresholdEvents::updateSystem(const HalfPeriodValues& values, bool isBeyond)
{
    if (!isBeyond) {
        close(mSystem, Channel::U, values.mEndUtcNs);
        return;
    }
    const auto& open = mOpen[static_cast<size_t>(values.mChannel)];
    if (!mSystem) {
        mSystem = OpenEvent{values.mBeginUtcNs, values.mRms};
        for (const auto& each : mOpen) {
            mSystem->mExtreme =
                each ? mThreshold.extremeOf(mSystem->mExtreme, each->mExtreme) : mSystem->mExtreme;
        }
    } else if (open) {
        mSystem->mExtreme = mThreshold.extremeOf(mSystem->mExtreme, values.mRms);
    }
}

void ThresholdEvents::close(std::optional<OpenEvent>& event, Channel channel,
                            std::optional<qint64> endUtcNs)
{
    if (event) {
        mQueue.add({channel, event->mBeginUtcNs, endUtcNs, event->mExtreme});
        event.reset();
    }
}

} // namespace measure
