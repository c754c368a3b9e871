#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "base/CaseError.h"
#include "commands/CommandFiles.h"
#include "commands/Commands.h"
#include "explain/Explanation.h"
#include "explain/ExplanationOutputs.h"

namespace commands {

namespace {
constexpr char kExplainFooter[] =
    R"(RECORDING is what vx-sandbox --record wrote. The last line says whether all is
as it should be, and so does the exit status: 0 if it is, 1 if not.

Example, for what vx-sandbox --record r.bin --events e.jsonl kept:
  vx-case explain r.bin --config vx-simulator.conf --events e.jsonl)";

struct ExplainOptions
{
    std::string mRecording;
    std::string mConfiguration;
    std::string mDirectory;
    std::string mEvents;
    std::string mOutput; ///< empty for standard output
    bool mJson = false;
};

std::unique_ptr<explain::ExplanationOutput> makeOutput(const ExplainOptions& options,
                                                       const explain::PlayPlan& plan,
                                                       base::ResultFile& file)
{
    if (options.mJson) {
        return explain::explanationJson(file);
    }
    size_t width = 0;
    for (const explain::PlayedFile& it : plan.files()) {
        width = std::max(width, it.mName.size());
    }
    return explain::explanationText(file, width);
}

void expectNoConflict(const ExplainOptions& options)
{
    CommandFiles files;
    files.addInput("the recording", options.mRecording);
    files.addCases(options.mConfiguration, options.mDirectory);
    files.addInput("--events", options.mEvents);
    files.addOutput("-o", options.mOutput);
    files.expectNoConflict();
}

void explain(const ExplainOptions& options)
{
    expectNoConflict(options);
    const explain::PlayPlan plan(options.mConfiguration, options.mDirectory);
    std::unique_ptr<explain::EventTimeline> events;
    if (!options.mEvents.empty()) {
        events = std::make_unique<explain::EventTimeline>(options.mEvents);
    }
    base::ResultFile result(options.mOutput);
    const auto output = makeOutput(options, plan, result);
    const bool isGood =
        explain::Explanation(plan, options.mRecording, std::move(events), *output).run();
    result.commit();
    if (!isGood) {
        throw base::BadVerdict();
    }
}
} // namespace

void addExplainCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "explain", "Says what was played when, and whether that is what should have been played");
    command.footer(kExplainFooter);
    const auto options = std::make_shared<ExplainOptions>();
    command.add_option("RECORDING", options->mRecording, "Recording of the driver")
        ->required()
        ->type_name("");
    command.add_option("--config", options->mConfiguration, "Case configuration that was played")
        ->type_name("FILE")
        ->required();
    command
        .add_option("--directory", options->mDirectory,
                    "Where relative names of value files begin (default: here)")
        ->type_name("DIRECTORY");
    command
        .add_option("--events", options->mEvents,
                    "What vx-sandbox --events wrote: the commands and when samples arrived")
        ->type_name("FILE");
    command.add_flag("--json", options->mJson, "One JSON object a line");
    command.add_option("-o", options->mOutput, "Writes to FILE instead of standard output")
        ->type_name("FILE");
    command.callback([options] { explain(*options); });
}

} // namespace commands
