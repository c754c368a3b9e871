#pragma once

#include <array>
#include <bitset>

#include "measure/EventQueue.h"
#include "measure/HalfPeriods.h"

namespace measure {

inline constexpr size_t kEventChannelCount = 3; ///< UA, UB, UC
using EventChannels = std::bitset<kEventChannelCount>;

/** A threshold of the rms, and the value at which the event ends; in V. */
struct RmsThreshold
{
    double mBeyond;
    double mBack;

    bool isLower() const { return mBack > mBeyond; }
    bool isBeyond(double rms) const { return isLower() ? rms < mBeyond : rms > mBeyond; }
    bool isBack(double rms) const { return isLower() ? rms >= mBack : rms <= mBack; }
    double extremeOf(double a, double b) const { return isLower() == (a < b) ? a : b; }
};

/**
 * Dips, swells or interruptions: of each voltage, and of the three together.
 *
 * By IEC 61000-4-30 an event begins where the first period begins whose rms is beyond the
 * threshold. It ends where the first period ends whose rms is back by the hysteresis. The event of
 * all three begins with the first and ends with the last of them. An interruption of all three
 * begins when the last of them is below and ends with the first that is back.
 */
class ThresholdEvents
{
public:
    /** The voltages that must be beyond the threshold for an event of the three together. */
    enum class Together
    {
        Any,
        All
    };

    ThresholdEvents(RmsThreshold threshold, Together together, EventRows rows)
        : mThreshold(threshold), mTogether(together), mQueue(rows)
    {
    }

    /**
     * @param inService voltages that take part; the others are never beyond the threshold. Voltages
     *        are only added to it.
     */
    void add(const HalfPeriodValues& values, EventChannels inService, MeasurementOutput& output);

    /** To be called at the end of the signal. */
    void finish(MeasurementOutput& output);

    /** Number of ended events of the three together. */
    size_t systemCount() const { return mQueue.systemCount(); }

    /** Whether the voltage is beyond the threshold. */
    bool isOpen(size_t channel) const { return mOpen[channel].has_value(); }

private:
    /** An event that has not ended. */
    struct OpenEvent
    {
        qint64 mBeginUtcNs;
        double mExtreme;
    };

    bool isSystemBeyond(EventChannels inService) const;
    void updateSystem(const HalfPeriodValues& values, bool isBeyond);
    void close(std::optional<OpenEvent>& event, Channel channel, std::optional<qint64> endUtcNs);

    RmsThreshold mThreshold;
    Together mTogether;
    EventQueue mQueue;
    std::array<std::optional<OpenEvent>, kEventChannelCount> mOpen;
    std::optional<OpenEvent> mSystem;
};

} // namespace measure
