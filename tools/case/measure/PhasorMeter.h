#pragma once

#include "measure/Demodulator.h"
#include "measure/Meter.h"
#include "measure/PhasorEstimator.h"

namespace measure {

/**
 * Synchrophasors, frequency and its rate of change at the instants k / rate of each UTC second.
 *
 * - A phasor X is that of sqrt(2) |X| cos(2 pi f0 t + arg X): the rms, and the angle to a cosine
 *   with the nominal frequency f0 whose peak is at the full second of UTC; -180 (excluded) to 180
 *   degrees.
 * - The stamp of a frame is the middle of its window, so there is no group delay in it. Frames
 *   whose window reaches beyond the signal or across a gap are left out.
 * - Positive sequences are of three channels that the signal has. A phasor of less than 0.01 % of
 * the nominal value has no angle; positive sequences of less than 5 % have no frequency. Both are
 * left out.
 */
class PhasorMeter : public Meter
{
public:
    /** Requires: PhasorWindow::problemOf() is empty. */
    PhasorMeter(const MeterSettings& settings, PhasorClass phasorClass, int framesPerSecond);

    void add(const waveform::SignalBlock& block, MeasurementOutput& output) override;
    void finish(MeasurementOutput& output) override;

private:
    double secondsOf(qint64 frame) const;
    qint64 stampOf(qint64 frame) const;
    qint64 firstFrameFrom(double seconds) const;
    void output(qint64 utcNs, const PhasorFrame& frame, MeasurementOutput& output) const;

    MeterSettings mSettings;
    qint64 mRate;
    Demodulator mDemodulator;
    PhasorEstimator mEstimator;
    qint64 mNextFrame; ///< counted from the epoch
};

} // namespace measure
