#pragma once

#include "measure/Demodulator.h"
#include "measure/Meter.h"
#include "measure/PhasorEstimator.h"

namespace measure {

/**
 * Synchrophasors, frequency and its rate of change at the instants k / rate of each UTC second.
 *
 * - A phasor X stands for sqrt(2) |X| cos(2 pi f0 t + arg X): the rms, and the angle relative to a
 *   cosine of the nominal frequency f0 that has its peak at the full second of UTC; -180 (excluded)
 *   to 180 degrees.
 * - The time stamp of a frame is the middle of its window, so there is no group delay. Frames whose
 *   window extends beyond the signal or across a gap are left out.
 * - A positive sequence needs all three channels in the signal. The angle of a phasor below 0.01 %
 *   of the nominal value, and the frequency of a positive sequence below 5 %, are left out.
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
