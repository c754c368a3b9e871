#include "importing/Replay.h"

#include <cmath>

#include "base/CaseError.h"
#include "base/ProgressLine.h"
#include "base/RaisedCosine.h"

namespace importing {

namespace {
/** Phases that are closer, in periods, differ only by rounding. */
constexpr double kRoundingOfCycles = 1e-6;

Counts crossfaded(const Counts& from, const Counts& to, double share)
{
    const double weight = base::raisedCosine(share);
    Counts counts{};
    for (size_t channel = 0; channel < counts.size(); ++channel) {
        counts[channel] = weight * from[channel] + (1.0 - weight) * to[channel];
    }
    return counts;
}

void expectPeriod(const ImportPlan& plan, double period)
{
    if (plan.mTo - plan.mFrom < period - kRoundingOfSeconds) {
        throw base::CaseError(
            "--before, --after and --loop: expected a recording of one period at least");
    }
}
} // namespace

Replay::Replay(const ImportPlan& plan, MappedSignal& signal, LineWriter& writer)
    : mPlan(plan), mSignal(signal), mWriter(writer)
{
}

PeriodicExtension Replay::firstPeriod() const
{
    expectPeriod(mPlan, mPlan.mFirstPeriod);
    return {mSignal, mPlan.mFrom, mPlan.mFirstPeriod, PeriodicExtension::Joint::Beginning};
}

PeriodicExtension Replay::lastPeriod() const
{
    expectPeriod(mPlan, mPlan.mLastPeriod);
    return {mSignal, mPlan.mTo - mPlan.mLastPeriod, mPlan.mLastPeriod,
            PeriodicExtension::Joint::End};
}

/** Cycles of a line after the recording, since the beginning of the last period. */
double Replay::cyclesOfLastAt(size_t line) const
{
    return 1.0 + (mPlan.mSchedule.secondsOf(line) - mPlan.mTo) / mPlan.mLastPeriod;
}

/** The frequency of a line after the recording: that of its block, which has one frequency. */
float Replay::frequencyBehind(size_t line, float next) const
{
    const resampling::Schedule& schedule = mPlan.mSchedule;
    const bool isInLastBlock = line < schedule.mPeriods.size() * kSamplesPerPeriod;
    return isInLastBlock ? schedule.mPeriods.back().mHz : next;
}

void Replay::writeBefore(size_t periods)
{
    if (periods == 0) {
        return;
    }
    PeriodicExtension first = firstPeriod();
    const float hz = mPlan.mSchedule.mPeriods.front().mHz;
    const size_t lines = mPlan.linesOf(periods);
    mFirstCycles = -static_cast<double>(lines) / mPlan.mLinesPerPeriod;
    for (size_t left = lines; left > 0; --left) {
        const double cycles = -static_cast<double>(left) / mPlan.mLinesPerPeriod;
        mWriter.write(first.countsAt(cycles), first.secondsAt(cycles), hz);
    }
}

void Replay::writeRecording()
{
    base::ProgressLine progress("resampling");
    const resampling::Schedule& schedule = mPlan.mSchedule;
    for (size_t line = 0; line < schedule.mLineCount; ++line) {
        const double seconds = schedule.secondsOf(line);
        mWriter.write(mSignal.countsAt(seconds), seconds, schedule.frequencyOf(line));
        if (line % kSamplesPerPeriod == 0) {
            progress.show(static_cast<double>(line) / static_cast<double>(schedule.mLineCount));
        }
    }
}

void Replay::writeAfter(size_t periods)
{
    if (periods == 0) {
        return;
    }
    PeriodicExtension last = lastPeriod();
    const double begin = cyclesOfLastAt(mPlan.mSchedule.mLineCount);
    const double linesPerPeriod = mPlan.mLinesPerLastPeriod;
    const auto lines =
        static_cast<size_t>(std::llround(static_cast<double>(periods) * linesPerPeriod));
    for (size_t line = 0; line < lines; ++line) {
        const double cycles = begin + static_cast<double>(line) / linesPerPeriod;
        mWriter.write(last.countsAt(cycles), last.secondsAt(cycles),
                      mPlan.mSchedule.mPeriods.back().mHz);
    }
}

void Replay::writeLoop()
{
    PeriodicExtension first = firstPeriod();
    PeriodicExtension last = lastPeriod();
    const resampling::Schedule& schedule = mPlan.mSchedule;
    const double begin = mPlan.cyclesAt(schedule.secondsOf(schedule.mLineCount));
    const double done = begin - mFirstCycles;
    const double cycles = std::ceil(done - kRoundingOfCycles) - done + 1.0;
    const double lastBegin = cyclesOfLastAt(schedule.mLineCount);
    const auto lines = static_cast<size_t>(std::round(cycles * mPlan.mLinesPerPeriod));
    for (size_t line = 0; line < lines; ++line) {
        const double share = static_cast<double>(line) / static_cast<double>(lines);
        const double phase = share * cycles;
        mWriter.write(
            crossfaded(last.countsAt(lastBegin + phase), first.countsAt(begin + phase), share),
            share < 0.5 ? last.secondsAt(lastBegin + phase) : first.secondsAt(begin + phase),
            frequencyBehind(schedule.mLineCount + line, schedule.mPeriods.front().mHz));
    }
}

} // namespace importing
