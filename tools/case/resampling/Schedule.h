#pragma once

#include <cstddef>
#include <vector>

#include "resampling/PhaseTrack.h"

namespace resampling {

/** 360 lines of a value file: one period of the signal, all with one frequency. */
struct SchedulePeriod
{
    double mStart; ///< s, of the first line
    double mStep;  ///< s from line to line
    float mHz;     ///< frequency in the lines
};

/** The instants of a source at which the lines of a value file lie. */
struct Schedule
{
    std::vector<SchedulePeriod> mPeriods; ///< the last one may be used in part
    size_t mLineCount = 0;

    double secondsOf(size_t line) const; ///< also after the last line
    float frequencyOf(size_t line) const;
};

/**
 * Keeps time: the lines are as far apart as the simulator plays them, a truncated step of whole
 * nanoseconds.
 * @param from, to in s; the first line is at `from`, the last not after `to`
 * Requires: from <= to; a frequency that can be played.
 */
Schedule scheduleKeepingTime(float hz, double from, double to);

/** Keeps the phase: 360 lines are one period of the track, however long it is. */
Schedule scheduleKeepingPhase(const PhaseTrack& track, double from, double to);

} // namespace resampling
