#include "resampling/Schedule.h"

#include <algorithm>

#include "SampleStep.h"
#include "base/Numbers.h"

namespace resampling {

namespace {

/** Instants that are closer, in lines, differ only by rounding. */
constexpr double kRoundingOfLines = 1e-6;
} // namespace

double Schedule::secondsOf(size_t line) const
{
    const size_t number = std::min(line / kSamplesPerPeriod, mPeriods.size() - 1);
    const SchedulePeriod& period = mPeriods[number];
    return period.mStart + static_cast<double>(line - number * kSamplesPerPeriod) * period.mStep;
}

float Schedule::frequencyOf(size_t line) const
{
    return mPeriods[line / kSamplesPerPeriod].mHz;
}

Schedule scheduleKeepingTime(float hz, double from, double to)
{
    const double step = sampleStepOf(hz);
    Schedule schedule;
    const double lines = (to - from) / (step * base::kSecondsPerNanosecond) + kRoundingOfLines;
    schedule.mLineCount = static_cast<size_t>(lines) + 1;
    for (size_t line = 0; line < schedule.mLineCount; line += kSamplesPerPeriod) {
        // `from` is a whole number of ns, so errors do not add up.
        const double start = from + static_cast<double>(line) * step * base::kSecondsPerNanosecond;
        schedule.mPeriods.push_back({start, step * base::kSecondsPerNanosecond, hz});
    }
    return schedule;
}

Schedule scheduleKeepingPhase(const PhaseTrack& track, double from, double to)
{
    const double firstCycles = track.cyclesAt(from);
    Schedule schedule;
    double start = from;
    for (size_t period = 1; start <= to; ++period) {
        const double next = track.secondsAt(firstCycles + static_cast<double>(period));
        const double step = (next - start) / kSamplesPerPeriod;
        schedule.mPeriods.push_back({start, step, static_cast<float>(1.0 / (next - start))});
        start = next;
    }
    const SchedulePeriod& last = schedule.mPeriods.back();
    schedule.mLineCount = (schedule.mPeriods.size() - 1) * kSamplesPerPeriod +
                          static_cast<size_t>((to - last.mStart) / last.mStep + kRoundingOfLines) +
                          1;
    return schedule;
}

} // namespace resampling
