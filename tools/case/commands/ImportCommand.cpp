#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "SampleStep.h"
#include "base/CaseError.h"
#include "base/ConfigurationPath.h"
#include "base/Numbers.h"
#include "base/TextTable.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/EncodingOption.h"
#include "commands/ScaleOption.h"
#include "importing/Importer.h"
#include "input/OpenInput.h"

namespace commands {

namespace {
using Json = nlohmann::ordered_json;

/** For more periods, repetitions in the configuration do the same. */
constexpr size_t kMaxRepeatedPeriods = 100'000;

constexpr char kImportFooter[] =
    R"(Voltages go to channels 0 to 3 and currents to 4 to 7, in mV and mA, in the order
A, B, C, neutral. --channels overrides that, by name or number: "0" means none, and
channels that it does not name are found as without it.

Example: five repetitions of the first period, and a configuration that plays it over and over:
  vx-case import fault.cfg --before 5 --loop -o fault.csv --configuration fault.conf)";

struct ImportCommandOptions
{
    std::string mRecording;
    input::InputOptions mInput;
    importing::ImportOptions mImport;
    std::string mOutput;        ///< empty for standard output
    std::string mConfiguration; ///< empty for none
    bool mJson = false;
};

/** Each of the following reads the text of an option. It returns an empty text, or the error. */
std::string readChannels(const std::string& text, importing::ImportOptions& options)
{
    return importing::readAssignments(text, options.mMapping.mAssignments);
}

std::string readSide(const std::string& text, importing::ImportOptions& options)
{
    options.mMapping.mSide = text == "primary" ? importing::TransformerSide::Primary
                                               : importing::TransformerSide::Secondary;
    return text == "primary" || text == "secondary"
               ? ""
               : "'" + text + "': expected primary or secondary";
}

std::string readFrequency(const std::string& text, importing::ImportOptions& options)
{
    if (text == "track" || text == "nominal") {
        options.mTiming =
            text == "track" ? importing::LineTiming::Phase : importing::LineTiming::Nominal;
        return "";
    }
    options.mTiming = importing::LineTiming::Fixed;
    const bool isGood =
        base::parseNumber(text, &options.mHz) && isPlayableStep(sampleStepOf(options.mHz));
    return isGood ? "" : "'" + text + "': expected track, nominal or a frequency in Hz";
}

std::string tableOf(const importing::ImportReport& report)
{
    base::TextTable table({">channel", "source", "unit", ">factor", ">rms", ">peak", ">written"});
    for (size_t i = 0; i < report.mChannels.size(); ++i) {
        const importing::ChannelReport& channel = report.mChannels[i];
        table.add({std::to_string(i), channel.mSource, channel.mUnit,
                   fmt::format("{:.10g}", channel.mFactor), fmt::format("{:.6g}", channel.mRms),
                   fmt::format("{:.6g}", channel.mPeak),
                   fmt::format("{:.6g}", channel.mWrittenPeak)});
    }
    std::string text = table.text();
    for (const std::string& remark : report.mRemarks) {
        text += "remark: " + remark + "\n";
    }
    return text + fmt::format("{} lines\n", report.mLines);
}

std::string jsonOf(const importing::ImportReport& report)
{
    Json json = {
        {"channels", Json::array()}, {"remarks", report.mRemarks}, {"lines", report.mLines}};
    for (size_t i = 0; i < report.mChannels.size(); ++i) {
        const importing::ChannelReport& channel = report.mChannels[i];
        json["channels"].push_back({{"channel", i},
                                    {"source", channel.mSource},
                                    {"unit", channel.mUnit},
                                    {"factor", channel.mFactor},
                                    {"rms", channel.mRms},
                                    {"peak", channel.mPeak},
                                    {"writtenPeak", channel.mWrittenPeak}});
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void runImport(const ImportCommandOptions& options)
{
    CommandFiles files;
    files.addSignal("the recording", options.mRecording);
    files.addOutput("-o", options.mOutput);
    files.addOutput("--configuration", options.mConfiguration);
    files.expectNoConflict();
    const auto source = input::openInput(options.mRecording, options.mInput);
    if (source->description().mFormat == "value file") {
        throw base::CaseError(options.mRecording +
                              ": is a value file already; play it without an import");
    }
    base::ResultFile output(options.mOutput);
    std::string line;
    std::unique_ptr<base::ResultFile> configuration;
    if (!options.mConfiguration.empty()) {
        line = "0,1," + base::configurationPath(options.mOutput) + "\n";
        configuration = std::make_unique<base::ResultFile>(options.mConfiguration);
    }
    const importing::ImportReport report =
        importing::importSignal(*source, options.mImport, output);
    output.commit();
    if (configuration) {
        configuration->write("# made by " + options.mImport.mMadeBy + "\n" + line);
        configuration->commit();
    }
    fmt::print(stderr, "{}", options.mJson ? jsonOf(report) : tableOf(report));
}

using OptionReader = std::string (*)(const std::string& text, importing::ImportOptions& options);

CLI::Option& addReader(CLI::App& command, const char* name, OptionReader read,
                       importing::ImportOptions& options, const char* help)
{
    const auto readOrThrow = [name, read, &options](const std::string& text) {
        const std::string problem = read(text, options);
        if (!problem.empty()) {
            throw CLI::ValidationError(name, problem);
        }
    };
    return *command.add_option_function<std::string>(name, readOrThrow, help);
}

void addMapping(CLI::App& command, importing::ImportOptions& options)
{
    addReader(command, "--channels", readChannels, options,
              "Source of each channel, for example 0=UA,1=17,3=0,4=IA*0.5,7=IA+IB+IC")
        .type_name("CHANNEL=SOURCE,...");
    addScaleOption(command, &options.mMapping.mCountsPerVolt, &options.mMapping.mCountsPerAmpere);
    addReader(command, "--side", readSide, options,
              "Side of the transformers: primary or secondary (default: as recorded)")
        .type_name("SIDE");
    command.add_flag("--clip", options.mClip, "Limits values that do not fit 32 bits");
}

void addTiming(CLI::App& command, importing::ImportOptions& options)
{
    addReader(command, "--frequency", readFrequency, options,
              "track (default): 360 lines are one period of the signal; nominal or HZ: 360 lines "
              "are one period of that frequency")
        .type_name("track|nominal|HZ");
    command
        .add_option("--from", options.mFrom,
                    "Start of the part to import (default: that of the recording)")
        ->type_name("S");
    command
        .add_option("--to", options.mTo,
                    "End of the part to import (default: that of the recording)")
        ->type_name("S");
    command
        .add_option("--before", options.mBefore,
                    "Repeats the first period N times at the beginning")
        ->type_name("N")
        ->check(CLI::Range(size_t{0}, kMaxRepeatedPeriods));
    CLI::Option* const after =
        command.add_option("--after", options.mAfter, "Repeats the last period N times at the end");
    after->type_name("N")->check(CLI::Range(size_t{0}, kMaxRepeatedPeriods));
    command
        .add_flag("--loop", options.mDoLoop,
                  "Fades the last period into the first, so that the file can be repeated without "
                  "a jump")
        ->excludes(after);
}
} // namespace

void addImportCommand(CLI::App& app)
{
    CLI::App& command =
        *app.add_subcommand("import", "Makes a value file from a recording of a relay or recorder");
    command.footer(kImportFooter);
    const auto options = std::make_shared<ImportCommandOptions>();
    command
        .add_option("RECORDING", options->mRecording,
                    "COMTRADE (.cfg with .dat, .cff) or a text file with a heading")
        ->required()
        ->type_name("");
    CLI::Option* const output = addOutputOption(command, options->mOutput);
    command
        .add_option("--configuration", options->mConfiguration,
                    "Writes a case configuration that plays the file of -o")
        ->type_name("FILE")
        ->needs(output);
    addMapping(command, options->mImport);
    addTiming(command, options->mImport);
    addEncodingOption(command, &options->mInput.mEncoding);
    command.add_flag("--json", options->mJson, "Prints the table on standard error as JSON");
    command.callback([options, &command] {
        options->mImport.mMadeBy = commandLineOf(command);
        runImport(*options);
    });
}

} // namespace commands
