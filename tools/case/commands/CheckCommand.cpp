#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <QDir>
#include <QFileInfo>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "ConfigFileLookup.h"
#include "base/CaseError.h"
#include "base/StandardOutput.h"
#include "check/CaseCheck.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"

namespace commands {

namespace {
using Json = nlohmann::ordered_json;

constexpr double kBytesPerMebibyte = 1048576.0;

struct Options
{
    std::string mConfiguration;
    std::string mDirectory;
    bool mStrict = false;
    bool mJson = false;
};

/** The configuration to check, with its full path if the working directory changes. */
QString configurationName(const Options& options)
{
    const QString name = QString::fromStdString(options.mConfiguration);
    if (!name.isEmpty()) {
        return options.mDirectory.empty() ? name : QFileInfo(name).absoluteFilePath();
    }
    const QString found = searchConfigFile(QString::fromLatin1(kCaseConfigName), std::cerr);
    if (found.isNull()) {
        throw base::CaseError("expected the name of a case configuration");
    }
    return found;
}

std::string frequencies(const check::CheckedConfiguration& row)
{
    return row.mLowestHz == row.mHighestHz ? fmt::format("{}", row.mHighestHz)
                                           : fmt::format("{} to {}", row.mLowestHz, row.mHighestHz);
}

std::string tableOf(const check::CaseCheck& check)
{
    std::string text = fmt::format("{:>6}  {:>7}  {:>10}  {:>11}  {:>12}  {}\n", "number",
                                   "entries", "samples", "duration/s", "frequency/Hz", "files");
    for (const check::CheckedConfiguration& row : check.configurations()) {
        text += fmt::format("{:>6}  {:>7}  {:>10}  {:>11.3f}  {:>12}  {}{}\n", row.mNumber,
                            row.mEntries, row.mSamples, row.mSeconds, frequencies(row),
                            fmt::join(row.mFiles, ", "),
                            row.mIsContinuous ? " (continuous from the start)" : "");
    }
    return text + fmt::format(
                      "memory for the samples: {:.1f} MiB on the 32-bit device, {:.1f} MiB "
                      "here\n",
                      static_cast<double>(check.bytesOn32Bits()) / kBytesPerMebibyte,
                      static_cast<double>(check.bytesHere()) / kBytesPerMebibyte);
}

std::string jsonOf(const check::CaseCheck& check)
{
    Json rows = Json::array();
    for (const check::CheckedConfiguration& row : check.configurations()) {
        rows.push_back({{"number", row.mNumber},
                        {"continuous", row.mIsContinuous},
                        {"entries", row.mEntries},
                        {"files", row.mFiles},
                        {"samples", row.mSamples},
                        {"seconds", row.mSeconds},
                        {"lowestHz", row.mLowestHz},
                        {"highestHz", row.mHighestHz}});
    }
    const Json result = {{"errors", check.errors()},
                         {"warnings", check.warnings()},
                         {"configurations", rows},
                         {"bytesOnDevice", check.bytesOn32Bits()},
                         {"bytesHere", check.bytesHere()}};
    return result.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void run(const Options& options)
{
    const QString name = configurationName(options);
    if (!options.mDirectory.empty() &&
        !QDir::setCurrent(QString::fromStdString(options.mDirectory))) {
        throw base::CaseError(options.mDirectory + ": no such directory");
    }
    const check::CaseCheck check(name);
    for (const std::string& error : check.errors()) {
        fmt::print(stderr, "error: {}\n", error);
    }
    for (const std::string& warning : check.warnings()) {
        fmt::print(stderr, "warning: {}\n", warning);
    }
    base::writeToStandardOutput(options.mJson ? jsonOf(check) : tableOf(check));
    if (!check.errors().empty() || (options.mStrict && !check.warnings().empty())) {
        throw base::CaseError(fmt::format("{}: {} errors, {} warnings", name.toStdString(),
                                          check.errorCount(), check.warnings().size()));
    }
}
} // namespace

void addCheckCommand(CLI::App& app)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        app.add_subcommand("check", "Finds mistakes in a case configuration and its value files");
    command
        ->add_option("CONFIGURATION", options->mConfiguration,
                     "Case configuration (default: where the simulator searches)")
        ->type_name("");
    addDirectoryOption(*command, options->mDirectory);
    command->add_flag("--strict", options->mStrict, "Fails on warnings, too");
    command->add_flag("--json", options->mJson, "Prints the result as JSON");
    command->footer("Example:\n  vx-case check --strict vx-simulator.conf");
    command->callback([options] { run(*options); });
}

} // namespace commands
