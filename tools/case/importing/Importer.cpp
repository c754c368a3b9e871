#include "importing/Importer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/ProgressLine.h"
#include "importing/ImportPlan.h"
#include "importing/LineWriter.h"
#include "importing/SteadySignal.h"
#include "waveform/ImportMark.h"

namespace importing {

namespace {

/** Times that are the same but for rounding, in s; likewise periods. */
constexpr double kSameTime = 1e-9;
constexpr double kRoundingOfCycles = 1e-6;

ChannelReport reportOf(const MappedChannel& channel, const RecordedSignal& recorded,
                       const ImportPlan& plan)
{
    ChannelReport report{channel.mText, channel.mUnit, channel.mCounts, 0.0, 0.0};
    const std::vector<double> values = recorded.sumOf(channel);
    double squares = 0.0;
    size_t count = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        if (recorded.mSeconds[i] >= plan.mFrom - kSameTime &&
            recorded.mSeconds[i] <= plan.mTo + kSameTime) {
            squares += values[i] * values[i];
            report.mPeak = std::max(report.mPeak, std::abs(values[i]));
            ++count;
        }
    }
    report.mRms = count > 0 ? std::sqrt(squares / static_cast<double>(count)) : 0.0;
    return report;
}

std::vector<std::string> commentsOf(const waveform::SignalDescription& description,
                                    const ImportOptions& options, const ImportReport& report,
                                    double begin)
{
    std::vector<std::string> comments = {
        "made by " + options.mMadeBy,
        fmt::format("from {}: {}; station {}, device {}; first sample {}", description.mFileName,
                    description.mFormat, description.mStation, description.mDevice,
                    description.mStartTime),
        waveform::importComment({description.mFileName, description.mStartTime, begin, {}})};
    for (size_t i = 0; i < report.mChannels.size(); ++i) {
        const ChannelReport& channel = report.mChannels[i];
        const bool isNothing = channel.mFactor == 0.0;
        comments.push_back(isNothing ? fmt::format("channel {}: nothing", i)
                                     : waveform::sourceComment(i, channel.mSource, channel.mFactor,
                                                               channel.mUnit));
    }
    comments.insert(comments.end(), report.mRemarks.begin(), report.mRemarks.end());
    comments.emplace_back(
        "nearest sample, from 1;its time in s;line, from 0;flags;frequency in "
        "Hz;channels 0 to 7");
    return comments;
}

/** The lines of a replay: steady, the recording, and steady again. */
class Replay
{
public:
    Replay(const ImportPlan& plan, MappedSignal& signal, LineWriter& writer)
        : mPlan(plan), mSignal(signal), mWriter(writer)
    {
    }

    void writeRecording();
    void writeBefore(size_t periods);
    void writeAfter(size_t periods);

private:
    SteadySignal steady();
    float steadyHz() const { return mPlan.mSchedule.mPeriods.front().mHz; }
    Counts passingOver(size_t line, const Counts& steady);

    const ImportPlan& mPlan;
    MappedSignal& mSignal;
    LineWriter& mWriter;
    double mFirstCycles = 0.0; ///< phase of the first line written
};

SteadySignal Replay::steady()
{
    if (mPlan.mFrom + mPlan.mFirstPeriod > mPlan.mTo) {
        throw base::CaseError("--before and --after: expected a recording of one period at least");
    }
    return {mSignal, mPlan.mFrom, mPlan.mFirstPeriod};
}

void Replay::writeBefore(size_t periods)
{
    if (periods == 0) {
        return;
    }
    SteadySignal signal = steady();
    const double lines = static_cast<double>(mPlan.linesOf(periods));
    mFirstCycles = -lines / mPlan.mLinesPerPeriod;
    for (double line = 0.0; line < lines; line += 1.0) {
        const double cycles = (line - lines) / mPlan.mLinesPerPeriod;
        mWriter.write(signal.countsAt(cycles), signal.secondsAt(cycles), steadyHz());
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

/**
 * Whole periods, and before them what is missing of one, so that the first line goes on where the
 * last one ends. The recording passes over into them within their first period.
 */
void Replay::writeAfter(size_t periods)
{
    if (periods == 0) {
        return;
    }
    SteadySignal signal = steady();
    const resampling::Schedule& schedule = mPlan.mSchedule;
    const size_t first = schedule.mLineCount;
    const double begin = mPlan.cyclesAt(schedule.secondsOf(first));
    const double done = begin - mFirstCycles;
    const double cycles = std::ceil(done - kRoundingOfCycles) - done + static_cast<double>(periods);
    const auto lines = static_cast<size_t>(std::round(cycles * mPlan.mLinesPerPeriod));
    for (size_t line = 0; line < lines; ++line) {
        const double phase =
            begin + static_cast<double>(line) * cycles / static_cast<double>(lines);
        const bool isInLastBlock = line < schedule.mPeriods.size() * kSamplesPerPeriod - first;
        mWriter.write(passingOver(line, signal.countsAt(phase)), signal.secondsAt(phase),
                      isInLastBlock ? schedule.mPeriods.back().mHz : steadyHz());
    }
}

/** From the recording's last period, as if it went on, to the steady signal. */
Counts Replay::passingOver(size_t line, const Counts& steady)
{
    const double share = static_cast<double>(line) / mPlan.mLinesPerPeriod;
    if (share >= 1.0) {
        return steady;
    }
    const resampling::Schedule& schedule = mPlan.mSchedule;
    const double seconds = schedule.secondsOf(schedule.mLineCount + line) - mPlan.mLastPeriod;
    const double weight = (1.0 + std::cos(base::kPi * share)) / 2.0;
    Counts counts = mSignal.countsAt(seconds);
    for (size_t channel = 0; channel < counts.size(); ++channel) {
        counts[channel] = weight * counts[channel] + (1.0 - weight) * steady[channel];
    }
    return counts;
}

ImportReport reportOf(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const ChannelMap& map, const ImportPlan& plan)
{
    ImportReport report;
    std::transform(map.mChannels.begin(), map.mChannels.end(), report.mChannels.begin(),
                   [&](const auto& channel) { return reportOf(channel, recorded, plan); });
    report.mRemarks = description.mRemarks;
    for (const auto* const remarks : {&map.mRemarks, &plan.mRemarks}) {
        report.mRemarks.insert(report.mRemarks.end(), remarks->begin(), remarks->end());
    }
    return report;
}
} // namespace

ImportReport importSignal(waveform::SignalSource& source, const ImportOptions& options,
                          base::ResultFile& output)
{
    const waveform::SignalDescription& description = source.description();
    const ChannelMap map = mapChannels(description, options.mMapping);
    const RecordedSignal recorded = readSignal(source, map);
    const resampling::SampleTimes times(recorded.mSeconds, !description.mRates.empty());
    const ImportPlan plan = planImport(description, recorded, times, map, options);
    ImportReport report = reportOf(description, recorded, map, plan);
    LineWriter writer(output, times, options.mClip);
    writer.writeComments(
        commentsOf(description, options, report, plan.beginBefore(options.mBefore)));
    MappedSignal signal(recorded, times, map, plan.linesPerSecond());
    Replay replay(plan, signal, writer);
    replay.writeBefore(options.mBefore);
    replay.writeRecording();
    replay.writeAfter(options.mAfter);
    report.mLines = writer.lines();
    const CountLimiter& limiter = writer.limiter();
    if (limiter.clipped() > 0 && !options.mClip) {
        throw base::CaseError(description.mFileName + ": " +
                              limiter.complaint(map, options.mMapping));
    }
    if (limiter.clipped() > 0) {
        report.mRemarks.push_back(fmt::format("{} values limited to 32 bits", limiter.clipped()));
    }
    return report;
}

} // namespace importing
