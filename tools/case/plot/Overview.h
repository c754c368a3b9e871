#pragma once

#include <vector>

#include "plot/Envelope.h"
#include "plot/FrequencyTrack.h"
#include "plot/Moments.h"

namespace plot {

/**
 * A signal as a whole: rms of each period and frequency over time, and when something happens.
 * Made while the signal is read once, in memory that does not depend on its length.
 */
class Overview
{
public:
    /** @param columns that the picture is wide */
    Overview(const waveform::SignalDescription& description, const DrawnChannels& channels,
             size_t columns);

    Overview(const Overview&) = delete;
    Overview& operator=(const Overview&) = delete;
    ~Overview() = default;

    /** Reads a signal, which must be the described one, to its end, with a progress line. */
    void read(waveform::SignalSource& source);

    /** Of a drawn channel, in the unit of its group. */
    std::vector<Point> rms(size_t channel) const { return mRms.curve(channel); }
    std::vector<Point> hertz() const { return mHertz.curve(0); }
    double largestRms(size_t group) const { return mMoments.largest(group); }
    std::vector<Moment> moments() const { return mMoments.found(); }

    /** Times of the first and the last sample, in s. */
    double begin() const { return mBegin; }
    double end() const { return mEnd; }

    /** Length of the first period, in s; 0 without samples. */
    double period() const { return mFirstPeriod; }

private:
    void take(const Period& last, const Period& period);

    Envelope mRms;
    Envelope mHertz;
    FrequencyTrack mTrack;
    Moments mMoments;
    Periods mPeriods;
    std::vector<double> mRmsOfPeriod;
    double mBegin = 0.0;
    double mEnd = 0.0;
    double mFirstPeriod = 0.0;
};

} // namespace plot
