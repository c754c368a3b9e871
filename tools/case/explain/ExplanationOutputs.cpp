#include "explain/ExplanationOutputs.h"
#include "base/Numbers.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace explain {

namespace {

constexpr char kRow[] = "{:<14}{:<{}}  {:>8}  {:>20}  {:>20}  {:>11}{}\n";

std::string cutText(const PlayedStretch& stretch)
{
    std::string text;
    if (stretch.mFirstSample > 0) {
        text += fmt::format("  from its sample {}", stretch.mFirstSample + 1);
    }
    if (stretch.mLastSample + 1 < stretch.mFileSamples) {
        text += fmt::format("  up to its sample {}", stretch.mLastSample + 1);
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
        return "no sample of it in the recording";
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

void writeLine(base::ResultFile& output, const nlohmann::ordered_json& object)
{
    output.write(object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                 "\n");
}

/** A table with the commands and findings between its rows. */
class ExplanationText : public ExplanationOutput
{
public:
    ExplanationText(base::ResultFile& output, size_t fileWidth)
        : mOutput(output), mFileWidth(std::max(fileWidth, std::string("file").size()))
    {
        mOutput.write(fmt::format(kRow, "configuration", "file", mFileWidth, "passes",
                                  "first time stamp", "last time stamp", "samples", ""));
    }

    void add(const PlayedStretch& stretch) override
    {
        mOutput.write(fmt::format(kRow, fmt::format("{}", fmt::join(stretch.mConfigurations, ", ")),
                                  stretch.mFile, mFileWidth, stretch.mPasses,
                                  stampText(stretch.mFirstStampNs), stampText(stretch.mLastStampNs),
                                  stretch.mSamples, cutText(stretch)));
    }

    void add(const CommandOutcome& command) override
    {
        mOutput.write(fmt::format("command '{}' at {}: {}\n", command.mText,
                                  stampText(command.mArrivalNs), outcomeText(command)));
    }

    void add(const Finding& finding) override
    {
        mOutput.write(fmt::format("! record {}: {}\n", finding.mRecord + 1, finding.mText));
    }

    void add(const Verdict& verdict) override
    {
        if (verdict.mFindings.isClean()) {
            mOutput.write(
                fmt::format("verdict: good: {} samples as they should be\n", verdict.mRecords));
            return;
        }
        mOutput.write("verdict: BAD: " + findingsText(verdict.mFindings) + "\n");
    }

private:
    base::ResultFile& mOutput;
    size_t mFileWidth;
};

/** An object a line, which tells its "kind". */
class ExplanationJson : public ExplanationOutput
{
public:
    explicit ExplanationJson(base::ResultFile& output) : mOutput(output) {}

    void add(const PlayedStretch& stretch) override
    {
        writeLine(mOutput, {{"kind", "stretch"},
                            {"configurations", stretch.mConfigurations},
                            {"file", stretch.mFile},
                            {"passes", stretch.mPasses},
                            {"firstSample", stretch.mFirstSample + 1},
                            {"lastSample", stretch.mLastSample + 1},
                            {"firstStampNs", stretch.mFirstStampNs},
                            {"lastStampNs", stretch.mLastStampNs},
                            {"samples", stretch.mSamples}});
    }

    void add(const CommandOutcome& command) override
    {
        nlohmann::ordered_json object = {
            {"kind", "command"}, {"text", command.mText}, {"arrivalNs", command.mArrivalNs}};
        if (!command.mProblem.empty()) {
            object["problem"] = command.mProblem;
        } else if (command.mFirstSampleArrivalNs) {
            object["seconds"] = secondsUntilFirstSample(command);
            object["firstStampNs"] = command.mFirstStampNs;
        }
        writeLine(mOutput, object);
    }

    void add(const Finding& finding) override
    {
        writeLine(mOutput, {{"kind", "finding"},
                            {"finding", nameOf(finding.mKind).mKey},
                            {"record", finding.mRecord + 1},
                            {"count", finding.mCount},
                            {"text", finding.mText}});
    }

    void add(const Verdict& verdict) override
    {
        nlohmann::ordered_json object = {{"kind", "verdict"},
                                         {"good", verdict.mFindings.isClean()},
                                         {"samples", verdict.mRecords}};
        for (int kind = 0; kind < static_cast<int>(FindingKind::Count); ++kind) {
            const auto it = static_cast<FindingKind>(kind);
            object[nameOf(it).mKey] = verdict.mFindings.count(it);
        }
        writeLine(mOutput, object);
    }

private:
    base::ResultFile& mOutput;
};
} // namespace

std::unique_ptr<ExplanationOutput> explanationText(base::ResultFile& output, size_t fileWidth)
{
    return std::make_unique<ExplanationText>(output, fileWidth);
}

std::unique_ptr<ExplanationOutput> explanationJson(base::ResultFile& output)
{
    return std::make_unique<ExplanationJson>(output);
}

} // namespace explain
