#pragma once

#include <bitset>
#include <limits>

#include "SampleRecord.h"
#include "measure/Measurement.h"
#include "waveform/SignalSource.h"

namespace measure {

/** What all meters know before the first sample. */
struct MeterSettings
{
    qint64 mBeginUtcNs = 0;     ///< of the first sample
    double mNominalVolts = 0.0; ///< phase to neutral, rms; what percent refers to
    double mNominalAmperes = 0.0;
    double mNominalHz = 50.0;                   ///< 50 or 60
    std::bitset<kChannelCount> mChannels{0xFF}; ///< that the signal has; the others are 0
    double mMaxHertz = std::numeric_limits<double>::infinity(); ///< up to which it is known
};

/**
 * Measures one or several quantities while a signal is read, in memory that does not depend on its
 * length. Blocks have the eight channels of the device (waveform::kDeviceChannelNames), in V and A,
 * and about 360 lines a period, whose times rise.
 */
class Meter
{
public:
    Meter() = default;
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;
    virtual ~Meter() = default;

    /** Takes the samples that come next, and outputs the values that have become known. */
    virtual void add(const waveform::SignalBlock& block, MeasurementOutput& output) = 0;

    /** The signal is over: outputs what can still be known. */
    virtual void finish(MeasurementOutput& output) = 0;
};

} // namespace measure
