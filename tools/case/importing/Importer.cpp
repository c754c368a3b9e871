#include "importing/Importer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/CaseError.h"
#include "base/Sums.h"
#include "importing/ImportPlan.h"
#include "importing/ImportRemarks.h"
#include "importing/LineWriter.h"
#include "importing/Replay.h"
#include "importing/Steadiness.h"
#include "waveform/ImportMark.h"

namespace importing {

namespace {
void append(const std::vector<std::string>& more, std::vector<std::string>* texts)
{
    texts->insert(texts->end(), more.begin(), more.end());
}

ChannelReport reportOf(const MappedChannel& channel, const RecordedSignal& recorded,
                       const ImportPlan& plan)
{
    ChannelReport report{channel.mText, channel.mUnit, channel.mCounts, 0.0, 0.0, 0.0};
    const std::vector<double> values = recorded.sumOf(channel);
    const std::vector<double>& seconds = recorded.mSeconds;
    const auto begin =
        std::lower_bound(seconds.begin(), seconds.end(), plan.mFrom - kRoundingOfSeconds);
    const auto end = std::upper_bound(begin, seconds.end(), plan.mTo + kRoundingOfSeconds);
    const double* const first = values.data() + (begin - seconds.begin());
    const auto count = static_cast<size_t>(end - begin);
    report.mRms = base::rootMeanSquare(first, count);
    for (size_t i = 0; i < count; ++i) {
        report.mPeak = std::max(report.mPeak, std::abs(first[i]));
    }
    return report;
}

std::vector<std::string> commentsOf(const waveform::SignalDescription& description,
                                    const ImportOptions& options, const ImportReport& report,
                                    double begin)
{
    const std::string& name =
        options.mSourceName.empty() ? description.mFileName : options.mSourceName;
    std::vector<std::string> comments = {
        "made by " + options.mMadeBy,
        fmt::format("from {}: {}; station {}, device {}; first sample {}", name,
                    description.mFormat, description.mStation, description.mDevice,
                    description.mStartTime),
        waveform::importComment({name, description.mStartTime, begin, {}})};
    for (size_t i = 0; i < report.mChannels.size(); ++i) {
        const ChannelReport& channel = report.mChannels[i];
        const bool isNegligible = channel.mFactor == 0.0;
        comments.push_back(isNegligible ? fmt::format("channel {}: nothing", i)
                                        : waveform::sourceComment(i, channel.mSource,
                                                                  channel.mFactor, channel.mUnit));
    }
    comments.insert(comments.end(), report.mRemarks.begin(), report.mRemarks.end());
    comments.emplace_back(
        "nearest sample, from 1;its time in s;line, from 0;flags;frequency in "
        "Hz;channels 0 to 7");
    return comments;
}

ImportReport reportOf(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const ChannelMap& map, const ImportPlan& plan)
{
    ImportReport report;
    std::transform(map.mChannels.begin(), map.mChannels.end(), report.mChannels.begin(),
                   [&](const auto& channel) { return reportOf(channel, recorded, plan); });
    report.mRemarks = description.mRemarks;
    append(map.mRemarks, &report.mRemarks);
    append(plan.mRemarks, &report.mRemarks);
    return report;
}

/** Adds what is known only after all lines are written. */
void finish(const waveform::SignalDescription& description, const ImportOptions& options,
            const ChannelMap& map, const LineWriter& writer, ImportReport* report)
{
    const CountLimiter& limiter = writer.limiter();
    if (limiter.clipped() > 0 && !options.mClip) {
        throw base::CaseError(description.mFileName + ": " +
                              limiter.overflowMessage(map, options.mMapping));
    }
    report->mLines = writer.lines();
    for (size_t i = 0; i < report->mChannels.size(); ++i) {
        ChannelReport& channel = report->mChannels[i];
        channel.mWrittenPeak = channel.mFactor > 0.0 ? writer.peak(i) / channel.mFactor : 0.0;
    }
    append(remarksOnPeaks(*report), &report->mRemarks);
    if (limiter.clipped() > 0) {
        report->mRemarks.push_back(fmt::format("{} values limited to 32 bits", limiter.clipped()));
    }
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
    MappedSignal signal(recorded, times, map, plan.linesPerSecond());
    ImportReport report = reportOf(description, recorded, map, plan);
    append(remarksOnRepeated(signal, plan, map, options), &report.mRemarks);
    append(remarksOnStatus(description, {plan.mFrom, plan.mTo}), &report.mRemarks);
    LineWriter writer(output, times, options.mClip);
    writer.writeComments(
        commentsOf(description, options, report, plan.beginBefore(options.mBefore)));
    Replay replay(plan, signal, writer);
    replay.writeBefore(options.mBefore);
    replay.writeRecording();
    replay.writeAfter(options.mAfter);
    if (options.mDoLoop) {
        replay.writeLoop();
    }
    finish(description, options, map, writer, &report);
    return report;
}

} // namespace importing
