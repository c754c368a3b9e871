#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>

#include "commands/CommandFiles.h"
#include "commands/Commands.h"
#include "commands/ScaleOption.h"
#include "exporting/Exporter.h"

namespace commands {

namespace {
constexpr char kExportFooter[] =
    R"(INPUT is a value file or a recording of the driver (vx-sandbox --record). The
suffix of FILE selects the format: NAME.cfg is COMTRADE 2013 with NAME.dat
beside it, NAME.cff the same in one file, NAME.csv text with a heading.

Example, the second half of the first second that arrived:
  vx-case export recording.bin --from 0.5 --to 1 -o half.cff)";

/** Refuses a data file without a configuration: it does not come from an earlier export. */
void expectOwnData(const std::string& output)
{
    const std::string data = exporting::dataNameFor(output);
    if (!data.empty() && std::filesystem::exists(data) && !std::filesystem::exists(output)) {
        throw CLI::ValidationError(
            fmt::format("{}: the data of -o would overwrite it, and there "
                        "is no {} that it belongs to; name another file",
                        data, output));
    }
}

void run(const exporting::ExportOptions& options)
{
    if (!exporting::isExportName(options.mOutput)) {
        throw CLI::ValidationError(
            "-o", fmt::format("'{}': expected a name in .cfg, .cff or .csv", options.mOutput));
    }
    CommandFiles files;
    files.addSignal("the input", options.mInput);
    files.addOutput("-o", options.mOutput);
    files.addOutput("the data of -o", exporting::dataNameFor(options.mOutput));
    files.expectNoConflict();
    expectOwnData(options.mOutput);
    const std::string remark = exporting::exportSignal(options);
    if (!remark.empty()) {
        std::cerr << "vx-case: " << options.mInput << ": " << remark << std::endl;
    }
}
} // namespace

void addExportCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "export", "Writes a value file or a recording of the driver as COMTRADE or text");
    command.footer(kExportFooter);
    const auto options = std::make_shared<exporting::ExportOptions>();
    command.add_option("INPUT", options->mInput, "Value file or recording of the driver")
        ->required()
        ->type_name("");
    command.add_option("-o", options->mOutput, "NAME.cfg, NAME.cff or NAME.csv")
        ->type_name("FILE")
        ->required();
    addScaleOption(command, &options->mCountsPerVolt, &options->mCountsPerAmpere);
    command.add_option("--from", options->mPart.mFrom, "Start of the part to export (default 0)")
        ->type_name("SECONDS");
    command
        .add_option("--to", options->mPart.mTo,
                    "End of the part to export, excluded (default: the end)")
        ->type_name("SECONDS");
    command.callback([options] { run(*options); });
}

} // namespace commands
