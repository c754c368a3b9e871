#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "assess/AssessmentPicture.h"
#include "assess/AssessmentText.h"
#include "assess/QuantityNames.h"
#include "assess/TableReader.h"
#include "base/NearestName.h"
#include "base/ResultFile.h"
#include "base/WrongInput.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/NominalOption.h"
#include "commands/PictureFile.h"
#include "measure/Quantities.h"

namespace commands {

namespace {
constexpr char kJudgeFooter[] =
    R"(EXPECTED is a table of vx-case measure. MEASURED is what a device measured: a CSV file
that --map describes, or one in the format of EXPECTED. The first line has the verdict.

Exit status: 0 if all values are within the limits, 1 if not, or if something was not
observed, 2 for a wrong command line or file.

Examples:
  vx-case judge --limits pq-a --list-limits
  vx-case judge expected.csv expected.csv --limits pq-a --nominal 230,5,50)";

struct JudgeOptions
{
    std::string mExpected;
    std::string mMeasured;
    std::string mLimits;
    std::string mMap; ///< empty for the format of measure
    std::optional<NominalValues> mNominal;
    std::set<std::string> mQuantities;
    bool mIsList = false;
    std::string mOutput; ///< empty for standard output

    // Paths; empty for none.
    std::string mJunit;
    std::string mJson;
    std::string mPlot;
};

/** The contents of all input files. */
struct JudgedFiles
{
    assess::LimitTable mLimits;
    assess::ReadTable mExpected;
    assess::ReadTable mMeasured;
};

/** Turns an invalid file into an error of the command line: it is not a bad verdict. */
template <typename Read>
auto readOrRefuse(Read read)
{
    try {
        return read();
    } catch (const base::CaseError& error) {
        throw base::WrongInput(error.what());
    }
}

void expectNoConflict(const JudgeOptions& options)
{
    CommandFiles files;
    files.addInput("the expected values", options.mExpected);
    files.addInput("the measured values", options.mMeasured);
    files.addInput("--map", options.mMap);
    files.addInput("--limits", options.mLimits);
    files.addOutput("-o", options.mOutput);
    files.addOutput("--junit", options.mJunit);
    files.addOutput("--json", options.mJson);
    files.addOutput("--plot", options.mPlot);
    files.expectNoConflict();
}

JudgedFiles readFiles(const JudgeOptions& options)
{
    JudgedFiles files;
    files.mLimits = assess::readLimits(options.mLimits);
    const assess::MeasuredMap map =
        options.mMap.empty() ? assess::measureMap() : assess::readMeasuredMap(options.mMap);
    files.mExpected = assess::readTable(options.mExpected, assess::measureMap());
    files.mMeasured = assess::readTable(options.mMeasured, map);
    return files;
}

void remarkOn(const assess::ReadTable& measured)
{
    if (!measured.mUnused.empty()) {
        fmt::print(stderr, "remark: unknown, not compared: {}\n",
                   fmt::join(measured.mUnused, ", "));
    }
    if (measured.mMissing > 0) {
        fmt::print(stderr, "remark: fields of the measured file without a value: {}\n",
                   measured.mMissing);
    }
}

void writeIfWanted(const std::string& path, const std::string& text)
{
    if (!path.empty()) {
        base::ResultFile file(path);
        file.write(text);
        file.commit();
    }
}

void plotIfWanted(const JudgeOptions& options, const assess::Assessment& assessment)
{
    if (options.mPlot.empty()) {
        return;
    }
    const assess::SeriesResult* const worst = assess::worstSeries(assessment.result());
    if (worst == nullptr) {
        fmt::print(stderr, "remark: no picture: nothing was compared\n");
        return;
    }
    const plot::PictureFormat format = pictureFormatOf("--plot", options.mPlot);
    expectDrawable(format);
    const plot::Picture picture = assess::pictureOf(*worst, assessment.valuesOf(worst->mKey));
    writeIfWanted(options.mPlot, drawn(picture, format));
}

assess::AssessmentOptions assessmentOptions(const JudgeOptions& options)
{
    assess::AssessmentOptions result;
    if (options.mNominal) {
        const NominalValues& nominal = *options.mNominal;
        result.mNominal = {nominal[0], nominal[1], nominal[2]};
    }
    result.mQuantities = options.mQuantities;
    return result;
}

void judge(const JudgeOptions& options)
{
    if (options.mIsList) {
        base::ResultFile list(options.mOutput);
        list.write(
            assess::textOf(readOrRefuse([&] { return assess::readLimits(options.mLimits); })));
        list.commit();
        return;
    }
    if (!options.mPlot.empty()) {
        pictureFormatOf("--plot", options.mPlot);
    }
    expectNoConflict(options);
    const JudgedFiles files = readOrRefuse([&options] { return readFiles(options); });
    remarkOn(files.mMeasured);
    const auto assessment = readOrRefuse([&] {
        return std::make_unique<assess::Assessment>(files.mExpected.mValues,
                                                    files.mMeasured.mValues, files.mLimits,
                                                    assessmentOptions(options));
    });
    const assess::AssessmentResult& result = assessment->result();
    base::ResultFile output(options.mOutput);
    output.write(assess::textOf(result, files.mLimits));
    output.commit();
    writeIfWanted(options.mJunit, assess::junitOf(result, files.mLimits));
    writeIfWanted(options.mJson, assess::jsonOf(result, files.mLimits));
    plotIfWanted(options, *assessment);
    if (!result.isGood()) {
        throw base::EndWith(EXIT_FAILURE);
    }
}

void readJudgedQuantities(const std::string& text, std::set<std::string>& quantities)
{
    std::vector<std::string> known = measure::quantityGroups();
    for (const std::string& name : assess::limitNames()) {
        known.push_back(name);
    }
    for (const std::string_view field : base::splitFields(text, ',')) {
        const std::string name(field);
        if (!assess::isMeasured(name) &&
            std::find(known.begin(), known.end(), name) == known.end()) {
            throw CLI::ValidationError("--quantities",
                                       fmt::format("'{}' is unknown; the nearest is {}", name,
                                                   base::nearestNames(name, known, 1).front()));
        }
        quantities.insert(name);
    }
}

void addJudgeFiles(CLI::App& command, JudgeOptions& options)
{
    command.add_option("EXPECTED", options.mExpected, "Table of vx-case measure")->type_name("");
    command.add_option("MEASURED", options.mMeasured, "Values that the device measured, CSV")
        ->type_name("");
    command
        .add_option(
            "--limits", options.mLimits,
            fmt::format("{}, or a file of limits", fmt::join(assess::builtInLimitNames(), ", ")))
        ->required()
        ->type_name("NAME|FILE");
    command.add_option("--map", options.mMap, "TOML file that describes the columns of MEASURED")
        ->type_name("FILE");
}

void addJudgeResults(CLI::App& command, JudgeOptions& options)
{
    addOutputOption(command, options.mOutput);
    command.add_option("--junit", options.mJunit, "Also writes the result as a JUnit file")
        ->type_name("FILE");
    command.add_option("--json", options.mJson, "Also writes the result as a JSON object")
        ->type_name("FILE");
    command
        .add_option("--plot", options.mPlot,
                    "Draws the worst quantity, its error and its limits; .svg or .png")
        ->type_name("FILE");
}
} // namespace

void addJudgeCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "judge", "Compares the values that a device measured with the expected ones");
    command.footer(kJudgeFooter);
    const auto options = std::make_shared<JudgeOptions>();
    addJudgeFiles(command, *options);
    addNominalOption(
        command, [options](const NominalValues& nominal) { options->mNominal = nominal; },
        "Nominal voltage to neutral, current and frequency (default: those of the limits)");
    command
        .add_option_function<std::string>(
            "--quantities",
            [options](const std::string& text) {
                readJudgedQuantities(text, options->mQuantities);
            },
            "Quantities or groups to judge (default: all expected ones)")
        ->type_name("NAME,...");
    command.add_flag("--list-limits", options->mIsList, "Only prints the table of limits");
    addJudgeResults(command, *options);
    command.callback([options] {
        if (!options->mIsList && options->mMeasured.empty()) {
            throw CLI::ValidationError("EXPECTED and MEASURED are required");
        }
        judge(*options);
    });
}

} // namespace commands
