#pragma once

#include "measure/EventSettings.h"
#include "measure/RapidChanges.h"
#include "measure/ThresholdEvents.h"

namespace measure {

/**
 * The events of the phase voltages by IEC 61000-4-30: dips, swells, interruptions and rapid
 * changes, of each voltage and, as channel U, of the three together. All rows of an event carry the
 * UTC of its beginning.
 *
 * A voltage takes part from its first rms on that is neither in a dip nor in a swell: what is
 * not connected has no events, and one that began before the signal has no beginning. An event
 * that the signal cuts off has no duration.
 *
 * At the end stands how many events there were, also where there was none; not where no voltage
 * ever took part.
 */
class EventMeter : public HalfPeriodMeter
{
public:
    explicit EventMeter(const EventSettings& settings);

    /** Values of other channels than the phase voltages do not count. */
    void add(const HalfPeriodValues& values, MeasurementOutput& output) override;
    void finish(MeasurementOutput& output) override;

private:
    RmsThreshold mDip;
    RmsThreshold mSwell;
    EventChannels mInService;
    ThresholdEvents mDips;
    ThresholdEvents mSwells;
    ThresholdEvents mInterruptions;
    RapidChanges mRapidChanges;
    qint64 mEndUtcNs = 0; ///< of the last period
};

} // namespace measure
