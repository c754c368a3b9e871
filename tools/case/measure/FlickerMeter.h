#pragma once

#include <optional>

#include "measure/FlickerFilter.h"
#include "measure/FlickerLevels.h"
#include "measure/Meter.h"

namespace measure {

/**
 * Block 1 of the flickermeter, and the square of block 2: divides the square of a voltage by that
 * of its reference rms. The reference follows the rms of half nominal periods with a time constant
 * of 27.3 s, which is 1 minute from 10 to 90 % of a step. At the beginning it is their mean so far.
 */
class VoltageAdaptor
{
public:
    /** @param minRms lower bound of the reference in V, above 0 */
    VoltageAdaptor(double nominalHz, double minRms)
        : mHalfPeriod(0.5 / nominalHz), mRms(minRms), mMinRms(minRms)
    {
    }

    /**
     * @param meanSquare of `step` seconds of the voltage
     * @return its ratio; nothing until there is an rms
     */
    std::optional<double> add(double meanSquare, double step);

private:
    double mHalfPeriod;
    double mRms;
    double mMinRms;
    double mSum = 0.0; ///< of the half period, up to now
    double mSeconds = 0.0;
    double mCount = 0.0; ///< of the half periods
};

/**
 * The digital flickermeter of IEC 61000-4-15 for UA, UB and UC: `pinst` is the maximum
 * instantaneous flicker sensation of a second, `pst` covers 10 minutes and `plt` two hours, all
 * aligned to UTC and with the time of their ends.
 *
 * The first 30 s, while the filters settle, are ignored, so the first Pst is that of the first
 * whole 10 minutes after them. The same applies after a gap of more than a quarter of a period.
 */
class FlickerMeter : public Meter
{
public:
    FlickerMeter(const MeterSettings& settings, Lamp lamp);

    void add(const waveform::SignalBlock& block, MeasurementOutput& output) override;
    void finish(MeasurementOutput& output) override;

private:
    static constexpr size_t kVoltageCount = 3;

    /** One voltage. */
    struct Voltage
    {
        VoltageAdaptor mAdaptor;
        FlickerFilter mFilter;
        FlickerLevels mLevels;
        double mSquares = 0.0; ///< of the open group
    };

    void restart(double seconds, MeasurementOutput& output);
    void endGroup(double seconds, MeasurementOutput& output);
    void endTick(MeasurementOutput& output);

    MeterSettings mSettings;
    Lamp mLamp;
    std::vector<Voltage> mVoltages;
    std::optional<FlickerCoefficients> mCoefficients;
    std::array<double, kVoltageCount> mLevels{};  ///< the latest
    std::array<double, kVoltageCount> mLargest{}; ///< of the open tick

    double mBegin = 0.0;      ///< s: of what is measured without a gap
    double mLast = 0.0;       ///< s: of the latest sample
    double mGroupBegin = 0.0; ///< s: of the last sample before the open group
    size_t mInGroup = 0;
    size_t mGroupSize = 0; ///< 0: no sample yet
    qint64 mTick = -1;     ///< the open one, UTC in FlickerLevels::kTickNs; -1: the filters settle
};

} // namespace measure
