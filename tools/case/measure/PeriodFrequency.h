#pragma once

#include "measure/Measurement.h"
#include "measure/PeriodGrid.h"

namespace measure {

/**
 * The frequency of each period, and of the whole periods in each full 10 s of UTC. Periods in which
 * the phase could not be tracked have no frequency and are left out of the 10 s. The 10 s have a
 * value if at least half of them was measured.
 */
class PeriodFrequency
{
public:
    /** @param beginUtcNs of the first sample */
    explicit PeriodFrequency(qint64 beginUtcNs);

    void add(const ClockPeriod& period, MeasurementOutput& output);

    /** @param seconds at which the signal ends */
    void finish(double seconds, MeasurementOutput& output);

private:
    void closeInterval(MeasurementOutput& output);
    qint64 utcOf(double seconds) const;

    qint64 mBeginUtcNs;
    qint64 mIntervalUtcNs; ///< begin of the 10 s
    double mCycles = 0.0;  ///< in the 10 s
    double mSeconds = 0.0;
};

} // namespace measure
