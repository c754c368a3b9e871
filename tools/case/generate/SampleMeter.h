#pragma once

#include <QtGlobal>
#include <array>
#include <optional>
#include <vector>

#include "generate/Timeline.h"
#include "generate/WaveParameters.h"

namespace generate {

/** The rms of one period is updated each half period. */
inline constexpr int kHalfPeriod = kSamplesPerPeriod / 2;

/** Thresholds for the rms of one period, in percent of the declared voltage. */
struct EventThresholds
{
    static constexpr double kDipPercent = 90.0;
    static constexpr double kSwellPercent = 110.0;
    static constexpr double kInterruptionPercent = 5.0; ///< as EN 50160 has it
    static constexpr double kHysteresisPercent = 2.0;
};

enum class EventKind
{
    Dip,
    Swell,
    Interruption ///< a dip in which all voltages fall below the threshold of an interruption
};

/**
 * From the beginning of the first period beyond the threshold to the end of the first one that is
 * back, as in IEC 61000-4-30.
 */
struct EventSpan
{
    Position mBegin;
    std::optional<Position> mEnd; ///< none if it lasts to the end of the file
};

/** An event of one voltage, or of all three together. */
struct VoltageEvent
{
    EventKind mKind;
    ChannelSet mChannels; ///< those beyond the threshold
    EventSpan mSpan;
    double mResidualRms;                   ///< the lowest of a dip, the highest of a swell
    std::vector<EventSpan> mInterruptions; ///< within a dip
};

/** An extreme of the rms of one period. */
struct RmsExtreme
{
    double mRms;
    Position mPosition; ///< first line of the first such period
};

/** What was measured in the lines of a file, in counts. */
struct MeasuredValues
{
    struct Channel
    {
        std::optional<RmsExtreme> mMinRms; ///< none if the file is too short, as the next one
        std::optional<RmsExtreme> mMaxRms;
        std::vector<VoltageEvent> mEvents; ///< of the phase voltages; dips and swells
    };

    double mDeclaredRms = 0.0; ///< reference of the thresholds; 0: no events are searched
    std::array<Channel, kChannelCount> mChannels;
    std::vector<VoltageEvent> mEvents; ///< of the three voltages together
};

/** The rms of one period of a channel, updated each half period. */
class RmsMeter
{
public:
    /** @param degrees of the channel's wave at line 0: its periods begin at a zero crossing */
    explicit RmsMeter(double degrees);

    /** @return the rms of the period that ends with this line, if one does */
    std::optional<double> add(qint64 line, qint32 value);

private:
    qint64 mFirst;
    qint64 mInHalf = 0;
    double mSquares = 0.0;
    std::optional<double> mLastSquares; ///< of the half period before
};

/** One threshold, crossed by one channel. */
class ThresholdMeter
{
public:
    /** Lines, before they have a time. */
    struct Crossing
    {
        qint64 mBegin;
        std::optional<qint64> mBack; ///< first line of the period that ends it
        double mExtreme;
    };

    /** A threshold to fall below where `back` is the higher of the two, else one to exceed. */
    ThresholdMeter(double beyond, double back) : mBeyond(beyond), mBack(back) {}

    void add(qint64 line, double rms);

    const std::vector<Crossing>& crossings() const { return mCrossings; }

private:
    double mBeyond;
    double mBack;
    std::vector<Crossing> mCrossings; ///< the last one may be open
};

/**
 * Measures the written lines: the extremes of the rms, and the events that IEC 61000-4-30 finds in
 * the rms of one period.
 */
class SampleMeter
{
public:
    /**
     * @param degrees of each channel's wave at line 0
     * @param declaredRms of a phase voltage, in counts; 0 for no events
     */
    SampleMeter(const std::array<double, kChannelCount>& degrees, double declaredRms);

    void add(qint64 line, const std::array<qint32, kChannelCount>& values);

    MeasuredValues values(const Timeline& timeline) const;

private:
    struct Extreme
    {
        double mRms;
        qint64 mLine;
    };

    struct Channel
    {
        RmsMeter mRms;
        ThresholdMeter mDip;
        ThresholdMeter mSwell;
        ThresholdMeter mInterruption;
        std::optional<Extreme> mMin;
        std::optional<Extreme> mMax;
    };

    std::vector<VoltageEvent> channelEvents(size_t channel, const Timeline& timeline) const;
    std::vector<VoltageEvent> systemEvents(const Timeline& timeline) const;

    double mDeclaredRms;
    std::vector<Channel> mChannels;
};

} // namespace generate
