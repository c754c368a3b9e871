#pragma once

#include "measure/EventSettings.h"
#include "measure/RapidChanges.h"
#include "measure/ThresholdEvents.h"

namespace measure {

/**
 * The events of the phase voltages by IEC 61000-4-30: dips, swells, interruptions and rapid
 * changes, of each voltage and, as channel U, of the three together. All rows of an event have the
 * UTC of its start.
 *
 * A voltage takes part from its first rms that is neither in a dip nor in a swell: a voltage that
 * is not connected has no events, and the start of an event before the signal is not known. An
 * event that is cut off by the end of the signal has no duration.
 *
 * The last row is the number of events, even if it is 0; it is missing if no voltage took part.
 */
class EventMeter : public HalfPeriodMeter
{
public:
    explicit EventMeter(const EventSettings& settings);

    /** Ignores other channels than the phase voltages. */
    void add(const HalfPeriodValues& values, MeasurementOutput& output) override;
    void finish(MeasurementOutput& output) override;

private:
    RmsThreshold mDip;
    RmsThreshold mSwell;
    EventChannels mInService;
    EventChannels mWereInEvent; ///< a dip or swell, at the period before
    ThresholdEvents mDips;
    ThresholdEvents mSwells;
    ThresholdEvents mInterruptions;
    RapidChanges mRapidChanges;
    qint64 mEndUtcNs = 0; ///< of the last period
};

} // namespace measure
