#pragma once

#include <array>
#include <vector>

#include "measure/EventSettings.h"
#include "measure/ThresholdEvents.h"

namespace measure {

/**
 * Whether one voltage is steady, by IEC 61000-4-30: all of the last 100/120 half-period values are
 * within the threshold of their mean. After a change, half of the threshold applies.
 */
class SteadyVoltage
{
public:
    /** A change from one steady voltage to the next. */
    struct Change
    {
        qint64 mBeginUtcNs;
        qint64 mEndUtcNs;
        double mLargest;      ///< V: largest deviation from the steady voltage before
        double mSteadyChange; ///< V: between the two steady voltages
    };

    SteadyVoltage(size_t count, double thresholdVolts) : mCount(count), mThreshold(thresholdVolts)
    {
    }

    /** @return the change that ends with this value, if there is one */
    std::optional<Change> add(const HalfPeriodValues& values);

    /** Start of the current change, if there is one. */
    std::optional<qint64> changingSince() const { return mBeginUtcNs; }

private:
    void updateMean();
    bool isSteadyWithin(double volts) const;
    const HalfPeriodValues& oldest() const { return mLast[mNext]; }

    size_t mCount;
    double mThreshold;
    std::vector<HalfPeriodValues> mLast; ///< a ring; one more than count
    size_t mNext = 0;                    ///< index of the next value
    bool mIsSteady = false;
    double mMean = 0.0;   ///< of the last values
    double mBefore = 0.0; ///< the last steady mean
    double mLargest = 0.0;
    std::optional<qint64> mBeginUtcNs; ///< of the current change
};

/**
 * Rapid voltage changes, of each voltage and of the three together, by IEC 61000-4-30. A change
 * lasts from the start of the first period that is not steady to 100/120 half periods before the
 * voltage is steady again. A change with the start or end of a dip or swell in it does not count.
 */
class RapidChanges
{
public:
    explicit RapidChanges(const EventSettings& settings);

    /** @param isExcluded the voltage is in a dip or swell, or not in service */
    void add(const HalfPeriodValues& values, bool isExcluded, MeasurementOutput& output);

    /** Drops the current change at the end of the signal, because it may not be a rapid one. */
    void finish(MeasurementOutput& output);

    /** Number of ended changes of the three together. */
    size_t systemCount() const { return mQueue.systemCount(); }

private:
    void takeIntoSystem(const SteadyVoltage::Change& change);
    qint64 firstOpen() const;

    std::vector<SteadyVoltage> mVoltages;
    EventChannels mExcluded; ///< voltages whose change is no rapid change
    EventQueue mQueue;

    /** Of the three together: since one is not steady, until all are. */
    std::optional<SteadyVoltage::Change> mSystem;
    bool mIsSystemExcluded = false;
};

} // namespace measure
