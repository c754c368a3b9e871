#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>

#include "OutputCheck.h"
#include "assess/TableReader.h"
#include "base/StandardOutput.h"
#include "base/WrongInput.h"
#include "cli/NightArgument.h"
#include "cli/Subcommands.h"
#include "commands/NominalOption.h"
#include "expected/NightJudge.h"
#include "journal/Journal.h"
#include "report/Report.h"
#include "report/ReportText.h"

namespace cli {

namespace {
constexpr char kJudgeFooter[] =
    R"(MEASURED is what a device measured during the night: a CSV file that --map describes,
or one in the format of vx-case measure. It is compared with FOLDER/expected, play by
play. The result is in FOLDER/assessment.json and in the reports, which are written
again.

Exit status: 0 if every play passed and all expected values were measured within the
limits; 1 if not, or if something was not observed; 2 for a wrong command line or file.

Example:
  vx-campaign judge night-0411 device.csv --map device.toml --limits pq-a)";

struct JudgeNightOptions
{
    std::string mFolder;
    std::string mMeasured;
    std::string mLimits;
    std::string mMap; ///< empty for the format of measure
    std::optional<commands::NominalValues> mNominal;
};

assess::Nominal nominalOf(const JudgeNightOptions& options, const report::NightSummary& night)
{
    if (options.mNominal) {
        const commands::NominalValues& nominal = *options.mNominal;
        return {nominal[0], nominal[1], nominal[2]};
    }
    const journal::Measuring& measuring = night.mNight.mMeasuring;
    return {measuring.mNominalVolts, measuring.mNominalAmperes, measuring.mNominalHz};
}

void remarkOnMeasured(const assess::ReadTable& measured)
{
    if (!measured.mUnused.empty()) {
        std::cerr << fmt::format("vx-campaign: remark: unknown, not compared: {}\n",
                                 fmt::join(measured.mUnused, ", "));
    }
    if (measured.mMissing > 0) {
        std::cerr << fmt::format(
            "vx-campaign: remark: fields of the measured file without a value: {}\n",
            measured.mMissing);
    }
}

report::NightAssessment assessNight(const JudgeNightOptions& options)
{
    const journal::Journal journal =
        journal::readJournal(options.mFolder + '/' + report::kJournalFile);
    const report::NightSummary night = report::summarize(journal.mEntries);
    expected::MeasuredNight measured;
    measured.mLimits = assess::readLimits(options.mLimits);
    measured.mNominal = nominalOf(options, night);
    assess::ReadTable table = assess::readTable(
        options.mMeasured,
        options.mMap.empty() ? assess::measureMap() : assess::readMeasuredMap(options.mMap));
    remarkOnMeasured(table);
    measured.mValues = std::move(table.mValues);
    report::NightAssessment assessment = expected::judgeNight(options.mFolder, night, measured);
    if (assessment.mCases.empty()) {
        throw base::CaseError(options.mFolder +
                              ": no case has expected values; add the key 'expect' to the plan");
    }
    assessment.mJournalBytes = journal.mWholeBytes;
    return assessment;
}

std::string linesOf(const report::NightAssessment& assessment)
{
    size_t width = 0;
    for (const auto& [name, it] : assessment.mCases) {
        width = std::max(width, name.size());
    }
    std::string lines;
    for (const auto& [name, it] : assessment.mCases) {
        lines += fmt::format("{:{}}  {}\n", name, width, it.mVerdict);
    }
    return lines;
}

/** Refuses inputs that are in the folder: the reports and the assessment are written there. */
void expectNoInputInFolder(const JudgeNightOptions& options)
{
    files::OutputCheck files;
    files.addInput("the measured values", options.mMeasured);
    files.addInput("--map", options.mMap);
    files.addInput("--limits", options.mLimits);
    for (const char* name :
         {report::kAssessmentFile, report::kTableFile, report::kJunitFile, report::kPageFile}) {
        files.addOutput("a report", options.mFolder + '/' + name);
    }
    if (const std::string conflict = files.conflict(); !conflict.empty()) {
        throw CLI::ValidationError(conflict);
    }
}

/** An invalid file ends with the status of a wrong command line, not with that of a bad verdict. */
report::NightAssessment assessOrRefuse(const JudgeNightOptions& options)
{
    try {
        return assessNight(options);
    } catch (const base::CaseError& error) {
        throw base::WrongInput(error.what());
    }
}

void judgeNight(const JudgeNightOptions& options)
{
    expectNoInputInFolder(options);
    const report::NightAssessment assessment = assessOrRefuse(options);
    report::writeAssessment(options.mFolder, assessment);
    const report::NightSummary night = report::writeReports(options.mFolder);
    base::writeToStandardOutput(report::verdictText(night) + "\n" + linesOf(assessment) +
                                options.mFolder + "/" + report::kPageFile + "\n");
    if (!night.isGood()) {
        throw base::EndWith(EXIT_FAILURE);
    }
}
} // namespace

void addJudgeCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "judge",
        "Compares the values that a device measured during a night with the expected ones");
    command.footer(kJudgeFooter);
    const auto options = std::make_shared<JudgeNightOptions>();
    addNightArgument(command, options->mFolder);
    command.add_option("MEASURED", options->mMeasured, "Values that the device measured, CSV")
        ->required()
        ->type_name("");
    command
        .add_option(
            "--limits", options->mLimits,
            fmt::format("{}, or a file of limits", fmt::join(assess::builtInLimitNames(), ", ")))
        ->required()
        ->type_name("NAME|FILE");
    command.add_option("--map", options->mMap, "TOML file that describes the columns of MEASURED")
        ->type_name("FILE");
    commands::addNominalOption(
        command, [options](const commands::NominalValues& nominal) { options->mNominal = nominal; },
        "Nominal voltage to neutral, current and frequency (default: those of the plan)");
    command.callback([options] { judgeNight(*options); });
}

} // namespace cli
