#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "base/NearestName.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/EncodingOption.h"
#include "commands/NominalOption.h"
#include "commands/ScaleOption.h"
#include "measure/Measuring.h"
#include "measure/UtcText.h"

namespace commands {

namespace {
constexpr char kMeasureFooter[] =
    R"(SIGNAL is a value file, a recording of the driver, COMTRADE (.cfg with .dat, .cff)
or a text file with a heading. Each row of the table has one value: UTC, quantity,
channel, value, unit, and whether it was measured or is known in closed form.

Example: the half-period rms values and the harmonics of a value file:
  vx-case measure sag.csv --begin 2026-01-01T00:00:00Z --quantities rms-half,harmonics \
      -o expected.csv)";

struct MeasureCommandOptions
{
    measure::MeasureOptions mMeasure;
    std::string mOutput; ///< empty for standard output
};

void readQuantities(const std::string& text, std::vector<std::string>& groups)
{
    const std::vector<std::string> known = measure::quantityGroups();
    for (const std::string_view field : base::splitFields(text, ',')) {
        const std::string group(field);
        if (std::find(known.begin(), known.end(), group) == known.end()) {
            throw CLI::ValidationError(
                "--quantities",
                fmt::format("'{}': expected names of {}; the nearest is {}", group,
                            fmt::join(known, ","), base::nearestNames(group, known, 1).front()));
        }
        groups.push_back(group);
    }
}

void readBegin(const std::string& text, std::optional<qint64>& begin)
{
    begin = measure::parseUtc(text);
    if (!begin) {
        throw CLI::ValidationError(
            "--begin",
            fmt::format("'{}': expected a time in UTC, for example 2026-01-01T00:00:00Z", text));
    }
}

void runMeasure(const MeasureCommandOptions& options)
{
    CommandFiles files;
    files.addSignal("the signal", options.mMeasure.mSignal.mPath);
    if (!options.mMeasure.mTruth.empty()) {
        files.addInput("--truth", options.mMeasure.mTruth);
    }
    files.addOutput("-o", options.mOutput);
    files.expectNoConflict();
    base::ResultFile output(options.mOutput);
    const auto remarks = measure::measureSignal(options.mMeasure, output);
    output.commit();
    for (const std::string& remark : remarks) {
        fmt::print(stderr, "remark: {}\n", remark);
    }
}

void addMeasuredInput(CLI::App& command, measure::SignalOptions& signal)
{
    command.add_option("SIGNAL", signal.mPath, "Signal to measure")->required()->type_name("");
    command
        .add_option_function<std::string>(
            "--begin", [&](const std::string& text) { readBegin(text, signal.mBeginUtcNs); },
            "UTC of the first sample (default: the file's)")
        ->type_name("UTC");
    addScaleOption(command, &signal.mCountsPerVolt, &signal.mCountsPerAmpere);
    command
        .add_option_function<std::string>(
            "--channels",
            [&](const std::string& text) {
                const std::string problem = importing::readAssignments(text, signal.mAssignments);
                if (!problem.empty()) {
                    throw CLI::ValidationError("--channels", problem);
                }
            },
            "Source of each channel, as in import, for example 0=UA,1=17,3=0")
        ->type_name("CHANNEL=SOURCE,...");
    addEncodingOption(command, &signal.mEncoding);
}

/** Adds an option with two possible words. */
template <typename Value>
void addChoice(CLI::App& command, const std::string& name, Value& value,
               const std::array<std::pair<const char*, Value>, 2>& choices, const std::string& text)
{
    const std::string names = fmt::format("{}|{}", choices[0].first, choices[1].first);
    command
        .add_option_function<std::string>(
            name,
            [&value, name, choices](const std::string& word) {
                const auto* const found =
                    std::find_if(choices.begin(), choices.end(),
                                 [&](const auto& each) { return word == each.first; });
                if (found == choices.end()) {
                    throw CLI::ValidationError(
                        name, fmt::format("'{}': expected {} or {}", word, choices[0].first,
                                          choices[1].first));
                }
                value = found->second;
            },
            text)
        ->type_name(names);
}

void readThresholds(const std::string& text, measure::EventPercents& percents)
{
    constexpr double kHysteresis = generate::EventThresholds::kHysteresisPercent;
    const auto fields = base::splitText(text, ',');
    const bool isGood = fields.size() == 3 && base::parseNumber(fields[0], &percents.mDip) &&
                        base::parseNumber(fields[1], &percents.mSwell) &&
                        base::parseNumber(fields[2], &percents.mInterruption) &&
                        percents.mInterruption > 0.0 && percents.mInterruption < percents.mDip &&
                        percents.mDip <= 100.0 - kHysteresis &&
                        percents.mSwell >= 100.0 + kHysteresis;
    if (!isGood) {
        throw CLI::ValidationError(
            "--thresholds", fmt::format("'{}': expected percent of the nominal voltage for dips, "
                                        "swells and interruptions, for example 90,110,5",
                                        text));
    }
}

/** Options for how some quantities are measured. */
void addMeterOptions(CLI::App& command, measure::MeasureOptions& measuring)
{
    using measure::Lamp;
    using measure::PhasorClass;
    command
        .add_option("--rate", measuring.mFramesPerSecond,
                    "Reporting rate of phasors in frames per second (default: one per nominal "
                    "period)")
        ->check(CLI::Range(1, measure::PhasorWindow::kMaxRate))
        ->type_name("N");
    addChoice<PhasorClass>(command, "--class", measuring.mPhasorClass,
                           {{{"P", PhasorClass::P}, {"M", PhasorClass::M}}},
                           "Performance class of phasors (default: M)");
    addChoice<Lamp>(command, "--lamp", measuring.mLamp,
                    {{{"230", Lamp::V230}, {"120", Lamp::V120}}},
                    "Lamp voltage for flicker (default: 230)");
    command
        .add_option_function<std::string>(
            "--thresholds",
            [&measuring](const std::string& text) {
                readThresholds(text, measuring.mEventPercents);
            },
            "Thresholds of events in percent of the nominal voltage (default: 90,110,5)")
        ->type_name("DIP,SWELL,INTERRUPTION");
}
} // namespace

void addMeasureCommand(CLI::App& app)
{
    CLI::App& command =
        *app.add_subcommand("measure", "Measures a signal as a reference instrument would");
    command.footer(kMeasureFooter);
    const auto options = std::make_shared<MeasureCommandOptions>();
    measure::MeasureOptions& measuring = options->mMeasure;
    addMeasuredInput(command, measuring.mSignal);
    addOutputOption(command, options->mOutput);
    command
        .add_option_function<std::string>(
            "--quantities",
            [&](const std::string& text) { readQuantities(text, measuring.mGroups); },
            "Groups to measure (default: all): " +
                fmt::format("{}", fmt::join(measure::quantityGroups(), ",")))
        ->type_name("NAME,...");
    addNominalOption(
        command,
        [&measuring](const NominalValues& nominal) {
            measuring.mNominalVolts = nominal[0];
            measuring.mNominalAmperes = nominal[1];
            measuring.mSignal.mNominalHz = nominal[2];
        },
        "Nominal voltage to neutral, current and frequency (default: 230,5 and the signal's own "
        "50 or 60)");
    command
        .add_option("--truth", measuring.mTruth,
                    "File of generate --truth; its values replace measured ones")
        ->type_name("FILE");
    CLI::Option* const wide = command.add_flag_callback(
        "--wide", [&] { measuring.mForm = measure::TableForm::Wide; },
        "Writes a row for each instant, a column for each quantity and channel");
    command
        .add_flag_callback(
            "--json", [&] { measuring.mForm = measure::TableForm::Json; },
            "Writes a JSON object for each value")
        ->excludes(wide);
    addMeterOptions(command, measuring);
    command.callback([options] { runMeasure(*options); });
}

} // namespace commands
