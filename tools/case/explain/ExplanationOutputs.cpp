#include "explain/ExplanationOutputs.h"
#include "base/Numbers.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace explain {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kRow[] = "{:<14}{:<{}}  {:>8}  {:>20}  {:>20}  {:>11}{}\n";

std::string cutText(const PlayedSegment& segment)
{
    std::string text;
    if (segment.mFirstSample > 0) {
        text += fmt::format("  from its sample {}", segment.mFirstSample + 1);
    }
    if (segment.mLastSample + 1 < segment.mFileSamples) {
        text += fmt::format("  up to its sample {}", segment.mLastSample + 1);
    }
    return text;
}

double secondsUntilFirstSample(const CommandOutcome& command)
{
    return static_cast<double>(*command.mFirstSampleArrivalNs - command.mArrivalNs) *
           base::kSecondsPerNanosecond;
}

std::string outcomeText(const CommandOutcome& command)
{
    if (!command.mProblem.empty()) {
        return "rejected: " + command.mProblem;
    }
    if (!command.mFirstSampleArrivalNs) {
        return "still waiting at the end: no sample of it in the recording";
    }
    return fmt::format("first sample {:.6f} s later, stamped {}", secondsUntilFirstSample(command),
                       stampText(command.mFirstStampNs));
}

std::string findingsText(const FindingCounts& findings)
{
    std::string text;
    for (int kind = 0; kind < static_cast<int>(FindingKind::Count); ++kind) {
        const size_t count = findings.count(static_cast<FindingKind>(kind));
        if (count > 0) {
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ",
                                nameOf(static_cast<FindingKind>(kind)).mText, count);
        }
    }
    return text;
}

/** Writes line by line; live output is flushed after each line. */
class LineOutput
{
public:
    LineOutput(base::ResultFile& file, bool isLive) : mFile(file), mIsLive(isLive) {}

    void write(const std::string& line)
    {
        mFile.write(line);
        if (mIsLive) {
            mFile.flush();
        }
    }

    void write(const Json& object)
    {
        write(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    }

private:
    base::ResultFile& mFile;
    bool mIsLive;
};

/** A table, with commands and findings between its rows. */
class ExplanationText : public ExplanationOutput
{
public:
    ExplanationText(base::ResultFile& output, size_t fileWidth, bool isLive)
        : mOutput(output, isLive), mFileWidth(std::max(fileWidth, std::string("file").size()))
    {
        mOutput.write(fmt::format(kRow, "configuration", "file", mFileWidth, "passes",
                                  "first time stamp", "last time stamp", "samples", ""));
    }

    void add(const PlayedSegment& segment) override
    {
        mOutput.write(fmt::format(kRow, fmt::format("{}", fmt::join(segment.mConfigurations, ", ")),
                                  segment.mFile, mFileWidth, segment.mPasses,
                                  stampText(segment.mFirstStampNs), stampText(segment.mLastStampNs),
                                  segment.mSamples, cutText(segment)));
    }

    void add(const CommandOutcome& command) override
    {
        mOutput.write(fmt::format("command '{}' at {}: {}\n", command.mText,
                                  stampText(command.mArrivalNs), outcomeText(command)));
    }

    void add(const Finding& finding) override
    {
        mOutput.write(nameOf(finding.mKind).mIsOfRun
                          ? fmt::format("! {}\n", finding.mText)
                          : fmt::format("! record {}: {}\n", finding.mRecord + 1, finding.mText));
    }

    void add(const Verdict& verdict) override
    {
        if (verdict.mFindings.isClean()) {
            mOutput.write(
                fmt::format("verdict: good: {} samples as expected{}\n", verdict.mRecords,
                            verdict.mRestBytes == 0
                                ? ""
                                : fmt::format(", and {} bytes of the next", verdict.mRestBytes)));
            return;
        }
        mOutput.write("verdict: BAD: " + findingsText(verdict.mFindings) + "\n");
    }

private:
    LineOutput mOutput;
    size_t mFileWidth;
};

/** One JSON object per line, with its "kind". */
class ExplanationJson : public ExplanationOutput
{
public:
    ExplanationJson(base::ResultFile& output, bool isLive) : mOutput(output, isLive) {}

    void add(const PlayedSegment& segment) override
    {
        mOutput.write(Json{{"kind", "stretch"},
                           {"configurations", segment.mConfigurations},
                           {"file", segment.mFile},
                           {"passes", segment.mPasses},
                           {"firstSample", segment.mFirstSample + 1},
                           {"lastSample", segment.mLastSample + 1},
                           {"firstStampNs", segment.mFirstStampNs},
                           {"lastStampNs", segment.mLastStampNs},
                           {"samples", segment.mSamples}});
    }

    void add(const CommandOutcome& command) override
    {
        Json object = {
            {"kind", "command"}, {"text", command.mText}, {"arrivalNs", command.mArrivalNs}};
        if (!command.mProblem.empty()) {
            object["problem"] = command.mProblem;
        } else if (command.mFirstSampleArrivalNs) {
            object["seconds"] = secondsUntilFirstSample(command);
            object["firstStampNs"] = command.mFirstStampNs;
        }
        mOutput.write(object);
    }

    void add(const Finding& finding) override
    {
        mOutput.write(Json{{"kind", "finding"},
                           {"finding", nameOf(finding.mKind).mKey},
                           {"record", finding.mRecord + 1},
                           {"count", finding.mCount},
                           {"text", finding.mText}});
    }

    void add(const Verdict& verdict) override
    {
        Json object = {{"kind", "verdict"},
                       {"good", verdict.mFindings.isClean()},
                       {"samples", verdict.mRecords}};
        for (int kind = 0; kind < static_cast<int>(FindingKind::Count); ++kind) {
            const auto it = static_cast<FindingKind>(kind);
            object[nameOf(it).mKey] = verdict.mFindings.count(it);
        }
        mOutput.write(object);
    }

private:
    LineOutput mOutput;
};
} // namespace

std::unique_ptr<ExplanationOutput> explanationText(base::ResultFile& output, size_t fileWidth,
                                                   bool isLive)
{
    return std::make_unique<ExplanationText>(output, fileWidth, isLive);
}

std::unique_ptr<ExplanationOutput> explanationJson(base::ResultFile& output, bool isLive)
{
    return std::make_unique<ExplanationJson>(output, isLive);
}

} // namespace explain
