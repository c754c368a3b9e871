#pragma once

#include <bitset>
#include <limits>

#include "SampleRecord.h"
#include "measure/Measurement.h"
#include "waveform/SignalSource.h"

namespace measure {

/** Settings of all meters, known before the first sample. */
struct MeterSettings
{
    qint64 mBeginUtcNs = 0;     ///< of the first sample
    double mNominalVolts = 0.0; ///< phase to neutral, rms
    double mNominalAmperes = 0.0;
    double mNominalHz = 50.0;                   ///< 50 or 60
    std::bitset<kChannelCount> mChannels{0xFF}; ///< that the signal has; the others are 0
    double mMaxHertz = std::numeric_limits<double>::infinity(); ///< bandwidth of the signal
};

/**
 * Measures one or more quantities while a signal is read; its memory does not grow with the length
 * of the signal. Blocks have the eight channels of the device (waveform::kDeviceChannelNames) in V
 * and A, about 360 lines per period, and ascending times.
 */
class Meter
{
public:
    Meter() = default;
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;
    virtual ~Meter() = default;

    /** Takes the next samples, and outputs the values that they complete. */
    virtual void add(const waveform::SignalBlock& block, MeasurementOutput& output) = 0;

    /** Outputs the remaining values at the end of the signal. */
    virtual void finish(MeasurementOutput& output) = 0;
};

} // namespace measure
