#pragma once

#include <array>

#include "measure/Measurement.h"

namespace measure {

/** The rms of one period of one channel; there is one value each half period. */
struct HalfPeriodValues
{
    qint64 mBeginUtcNs = 0;         ///< of the period: where the channel's fundamental crosses 0
    qint64 mEndUtcNs = 0;           ///< of the period
    Channel mChannel = Channel::UA; ///< of the device
    double mRms = 0.0;              ///< V or A
};

/** Receives the half-period values of all channels, in the order of the ends of their periods. */
class HalfPeriodMeter
{
public:
    HalfPeriodMeter() = default;
    HalfPeriodMeter(const HalfPeriodMeter&) = delete;
    HalfPeriodMeter& operator=(const HalfPeriodMeter&) = delete;
    virtual ~HalfPeriodMeter() = default;

    virtual void add(const HalfPeriodValues& values, MeasurementOutput& output) = 0;

    /** Outputs the remaining values at the end of the signal. */
    virtual void finish(MeasurementOutput& output) = 0;
};

} // namespace measure
