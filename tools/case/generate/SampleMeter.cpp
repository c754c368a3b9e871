#include "generate/SampleMeter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "generate/Neutral.h"

namespace generate {

namespace {
using Crossing = ThresholdMeter::Crossing;

/** Relative tolerance: values that differ by less are equal but for the rounding of samples. */
constexpr double kSame = 1e-5;

ThresholdMeter lowerThreshold(double declared, double percent)
{
    const double back = percent + EventThresholds::kHysteresisPercent;
    return {declared * percent / kPercent * (1.0 - kSame),
            declared * back / kPercent * (1.0 - kSame)};
}

ThresholdMeter upperThreshold(double declared, double percent)
{
    const double back = percent - EventThresholds::kHysteresisPercent;
    return {declared * percent / kPercent * (1.0 + kSame),
            declared * back / kPercent * (1.0 + kSame)};
}

EventSpan spanOf(const Crossing& crossing, const Timeline& timeline)
{
    EventSpan span{timeline.positionOf(crossing.mBegin), std::nullopt};
    if (crossing.mBack) {
        span.mEnd = timeline.positionOf(*crossing.mBack + kSamplesPerPeriod);
    }
    return span;
}

/** The first line of the period that is back within the threshold; beyond all lines if none is. */
qint64 backOf(const Crossing& crossing)
{
    return crossing.mBack.value_or(std::numeric_limits<qint64>::max());
}

/** A crossing of one of the phases. */
struct PhaseCrossing
{
    size_t mChannel;
    Crossing mCrossing;
};

/** Overlapping crossings of several phases. It begins with the first and ends with the last one. */
struct SystemCrossing
{
    ChannelSet mChannels;
    Crossing mCrossing;
};

std::vector<SystemCrossing> unionOf(std::vector<PhaseCrossing> crossings, bool isLower)
{
    std::sort(crossings.begin(), crossings.end(),
              [](const auto& a, const auto& b) { return a.mCrossing.mBegin < b.mCrossing.mBegin; });
    std::vector<SystemCrossing> result;
    for (const auto& [channel, crossing] : crossings) {
        if (result.empty() || backOf(result.back().mCrossing) < crossing.mBegin) {
            result.push_back({{}, crossing});
        }
        Crossing& whole = result.back().mCrossing;
        if (backOf(crossing) > backOf(whole)) {
            whole.mBack = crossing.mBack;
        }
        whole.mExtreme = isLower ? std::min(whole.mExtreme, crossing.mExtreme)
                                 : std::max(whole.mExtreme, crossing.mExtreme);
        result.back().mChannels.set(channel);
    }
    return result;
}

void sortByBegin(std::vector<VoltageEvent>& events)
{
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) {
        return a.mSpan.mBegin.mLine < b.mSpan.mBegin.mLine;
    });
}

/** The parts in which crossings of both overlap. */
std::vector<Crossing> intersectionOf(const std::vector<Crossing>& a, const std::vector<Crossing>& b)
{
    std::vector<Crossing> result;
    for (const Crossing& one : a) {
        for (const Crossing& other : b) {
            const qint64 begin = std::max(one.mBegin, other.mBegin);
            const Crossing& first = backOf(one) < backOf(other) ? one : other;
            if (begin < backOf(first)) {
                result.push_back({begin, first.mBack, 0.0});
            }
        }
    }
    return result;
}
} // namespace

RmsMeter::RmsMeter(double degrees)
{
    const double phase = std::fmod(degrees, kHalfPeriod);
    mFirst = qint64(std::ceil(phase > 0.0 ? kHalfPeriod - phase : -phase));
}

std::optional<double> RmsMeter::add(qint64 line, qint32 value)
{
    if (line < mFirst) {
        return std::nullopt;
    }
    mSquares += double(value) * value;
    if (++mInHalf < kHalfPeriod) {
        return std::nullopt;
    }
    std::optional<double> rms;
    if (mLastSquares) {
        rms = std::sqrt((*mLastSquares + mSquares) / kSamplesPerPeriod);
    }
    mLastSquares = mSquares;
    mSquares = 0.0;
    mInHalf = 0;
    return rms;
}

void ThresholdMeter::add(qint64 line, double rms)
{
    const bool isLower = mBack > mBeyond;
    const bool isOpen = !mCrossings.empty() && !mCrossings.back().mBack;
    if (!isOpen) {
        if (isLower ? rms < mBeyond : rms > mBeyond) {
            mCrossings.push_back({line, std::nullopt, rms});
        }
        return;
    }
    Crossing& open = mCrossings.back();
    if (isLower ? rms >= mBack : rms <= mBack) {
        open.mBack = line;
        return;
    }
    open.mExtreme = isLower ? std::min(open.mExtreme, rms) : std::max(open.mExtreme, rms);
}

SampleMeter::SampleMeter(const std::array<double, kChannelCount>& degrees, double declaredRms)
    : mDeclaredRms(declaredRms)
{
    for (const double phase : degrees) {
        mChannels.push_back({RmsMeter(phase),
                             lowerThreshold(declaredRms, EventThresholds::kDipPercent),
                             upperThreshold(declaredRms, EventThresholds::kSwellPercent),
                             lowerThreshold(declaredRms, EventThresholds::kInterruptionPercent),
                             {},
                             {}});
    }
}

void SampleMeter::add(qint64 line, const std::array<qint32, kChannelCount>& values)
{
    for (size_t i = 0; i < values.size(); ++i) {
        Channel& channel = mChannels[i];
        const std::optional<double> rms = channel.mRms.add(line, values[i]);
        if (!rms) {
            continue;
        }
        const qint64 first = line + 1 - kSamplesPerPeriod;
        if (!channel.mMin || *rms < channel.mMin->mRms * (1.0 - kSame)) {
            channel.mMin = {*rms, first};
        }
        if (!channel.mMax || *rms > channel.mMax->mRms * (1.0 + kSame)) {
            channel.mMax = {*rms, first};
        }
        if (i < kPhaseCount && mDeclaredRms > 0.0) {
            channel.mDip.add(first, *rms);
            channel.mSwell.add(first, *rms);
            channel.mInterruption.add(first, *rms);
        }
    }
}

MeasuredValues SampleMeter::values(const Timeline& timeline) const
{
    MeasuredValues values;
    values.mDeclaredRms = mDeclaredRms;
    for (size_t i = 0; i < mChannels.size(); ++i) {
        MeasuredValues::Channel& channel = values.mChannels[i];
        if (mChannels[i].mMin) {
            channel.mMinRms = {mChannels[i].mMin->mRms,
                               timeline.positionOf(mChannels[i].mMin->mLine)};
            channel.mMaxRms = {mChannels[i].mMax->mRms,
                               timeline.positionOf(mChannels[i].mMax->mLine)};
        }
        channel.mEvents = channelEvents(i, timeline);
    }
    values.mEvents = systemEvents(timeline);
    return values;
}

std::vector<VoltageEvent> SampleMeter::channelEvents(size_t channel, const Timeline& timeline) const
{
    std::vector<VoltageEvent> events;
    ChannelSet only;
    only.set(channel);
    for (const auto& [kind, meter] : {std::pair{EventKind::Dip, &mChannels[channel].mDip},
                                      {EventKind::Swell, &mChannels[channel].mSwell}}) {
        for (const Crossing& crossing : meter->crossings()) {
            events.push_back({kind, only, spanOf(crossing, timeline), crossing.mExtreme, {}});
        }
    }
    sortByBegin(events);
    return events;
}

std::vector<VoltageEvent> SampleMeter::systemEvents(const Timeline& timeline) const
{
    std::vector<PhaseCrossing> dips;
    std::vector<PhaseCrossing> swells;
    std::vector<Crossing> interruptions = mChannels[0].mInterruption.crossings();
    for (size_t i = 0; i < kPhaseCount; ++i) {
        for (const Crossing& crossing : mChannels[i].mDip.crossings()) {
            dips.push_back({i, crossing});
        }
        for (const Crossing& crossing : mChannels[i].mSwell.crossings()) {
            swells.push_back({i, crossing});
        }
        interruptions = intersectionOf(interruptions, mChannels[i].mInterruption.crossings());
    }
    const std::vector<SystemCrossing> systemDips = unionOf(std::move(dips), true);
    const std::vector<SystemCrossing> systemSwells = unionOf(std::move(swells), false);
    std::vector<VoltageEvent> events;
    for (const auto& [channels, dip] : systemDips) {
        VoltageEvent event{EventKind::Dip, channels, spanOf(dip, timeline), dip.mExtreme, {}};
        for (const Crossing& interruption : interruptions) {
            if (interruption.mBegin >= dip.mBegin && interruption.mBegin < backOf(dip)) {
                event.mKind = EventKind::Interruption;
                event.mInterruptions.push_back(spanOf(interruption, timeline));
            }
        }
        events.push_back(event);
    }
    for (const auto& [channels, swell] : systemSwells) {
        events.push_back({EventKind::Swell, channels, spanOf(swell, timeline), swell.mExtreme, {}});
    }
    sortByBegin(events);
    return events;
}

} // namespace generate
