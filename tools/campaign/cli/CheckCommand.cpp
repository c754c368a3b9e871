#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <QTemporaryDir>
#include <memory>
#include <optional>

#include "base/Numbers.h"
#include "base/StandardOutput.h"
#include "base/TextTable.h"
#include "cli/PlanOptions.h"
#include "cli/Subcommands.h"
#include "plan/Draft.h"
#include "report/ReportText.h"
#include "run/PlayRecordings.h"
#include "stage/Stage.h"

namespace cli {

namespace {
constexpr double kBytesPerMebibyte = 1048576.0;
constexpr double kBytesPerGibibyte = 1024.0 * kBytesPerMebibyte;

struct CheckOptions
{
    PlanOptions mPlan;
    std::string mFolder; ///< empty: a temporary folder
};

std::vector<std::string> rowOf(const journal::StagedCase& it)
{
    return {std::to_string(it.mNumber),
            it.mName,
            it.mTimes > 0 ? std::to_string(it.mTimes) : "-",
            std::to_string(it.mSamples),
            std::to_string(it.mFileRepetitions),
            fmt::format("{:.3f}", double(it.mDurationNs) * base::kSecondsPerNanosecond),
            it.mSource};
}

/** Empty if no case has expected values. */
std::string recordingsText(const plan::Plan& plan, const stage::Stage& stage)
{
    const quint64 bytes = stage::recordingBytes(stage, plan.mGapNs);
    if (bytes == 0) {
        return "";
    }
    constexpr quint64 kMaxBytes = run::PlayRecordings::kMaxBytes;
    return fmt::format("recordings for the expected values: {:.1f} MiB until the night is over{}\n",
                       double(bytes) / kBytesPerMebibyte,
                       bytes > kMaxBytes
                           ? fmt::format("; at most {:g} GiB are recorded, so play the rest in "
                                         "another night",
                                         double(kMaxBytes) / kBytesPerGibibyte)
                           : "");
}

std::string tableOf(const plan::Plan& plan, const stage::Stage& stage)
{
    base::TextTable table(
        {">number", "case", ">times", ">samples", ">repetitions", ">duration/s", "source"});
    table.add(rowOf(stage.mSteady));
    for (const journal::StagedCase& it : stage.mCases) {
        table.add(rowOf(it));
    }
    std::string text = table.text();
    for (const std::string& remark : stage.mRemarks) {
        text += "remark: " + remark + "\n";
    }
    text += fmt::format("memory for the samples: {:.1f} MiB on the 32-bit device\n",
                        double(stage.mBytesOnDevice) / kBytesPerMebibyte) +
            recordingsText(plan, stage);
    return text + fmt::format("{}, {}, {:g} s between them: about {}\n",
                              report::countText(stage.mCases.size(), "case"),
                              report::countText(size_t(plan.playCount()), "play"),
                              double(plan.mGapNs) * base::kSecondsPerNanosecond,
                              report::durationText(stage::nightNs(stage, plan.mGapNs)));
}

/** Makes the stage in the folder; without one, in a temporary folder. */
stage::Stage makeIn(const std::string& folder, const plan::Plan& plan)
{
    if (!folder.empty()) {
        return stage::makeStage(plan, folder);
    }
    const QTemporaryDir temporary;
    if (!temporary.isValid()) {
        throw base::CaseError(temporary.errorString().toStdString());
    }
    return stage::makeStage(plan, temporary.path().toStdString());
}

/** Makes the good cases even if others are wrong, because making them may show more mistakes. */
void check(const CheckOptions& options)
{
    plan::Draft draft = plan::draftPlan(plan::planText(options.mPlan.mPlan), options.mPlan.mPlan);
    const bool isReadable = draft.mMistakes.texts().empty();
    std::optional<stage::Stage> stage;
    try {
        if (isReadable) {
            draft.mPlan = plan::selected(std::move(draft.mPlan), options.mPlan.mSelection);
        }
        stage = makeIn(isReadable ? options.mFolder : "", draft.mPlan);
    } catch (const plan::PlanError& error) {
        draft.mMistakes.add(error.what());
    }
    draft.mMistakes.throwIfAny();
    base::writeToStandardOutput(tableOf(draft.mPlan, *stage));
}
} // namespace

void addCheckCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "check", "Makes and checks the value files of a plan, without playing them");
    const auto options = std::make_shared<CheckOptions>();
    addPlanOptions(command, options->mPlan);
    command.add_option("-o", options->mFolder, "Keeps the value files in FOLDER/stage")
        ->type_name("FOLDER");
    command.footer("Example:\n  vx-campaign check night.toml");
    command.callback([options] { check(*options); });
}

} // namespace cli
