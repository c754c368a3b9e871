#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "measure/HalfPeriodRms.h"
#include "measure/Meter.h"
#include "measure/PeriodFrequency.h"
#include "measure/PeriodGrid.h"
#include "measure/Selection.h"
#include "measure/WindowSeries.h"

namespace measure {

/**
 * Measures everything over periods of the fundamental: half-period rms, frequency, and the
 * quantities of 10/12 periods. Passes the half-period values on to further meters.
 */
class PeriodMeters : public Meter
{
public:
    PeriodMeters(const Selection& selection, const MeterSettings& settings);

    /** Adds a meter for the half-period values of all measured channels. Borrows it. */
    void handTo(HalfPeriodMeter& meter) { mHalfPeriodMeters.push_back(&meter); }

    void add(const waveform::SignalBlock& block, MeasurementOutput& output) override;
    void finish(MeasurementOutput& output) override;

private:
    void measure(MeasurementOutput& output);
    void takeHalfPeriods(MeasurementOutput& output);

    MeterSettings mSettings;
    bool mHasRmsRows;
    bool mHasFrequencyRows;
    PeriodGrid mGrid;
    HalfPeriodRms mHalfPeriods;
    PeriodFrequency mFrequency;
    std::optional<WindowSeries> mWindows; ///< where anything of them is asked for
    std::vector<HalfPeriodMeter*> mHalfPeriodMeters;
};

} // namespace measure
