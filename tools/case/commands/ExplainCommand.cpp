#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "base/CaseError.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "explain/Explanation.h"
#include "explain/ExplanationOutputs.h"

namespace commands {

namespace {
constexpr char kExplainFooter[] =
    R"(RECORDING is a file of vx-sandbox --record, or - for standard input. The last line
has the verdict.

Exit status: 0 if everything was played as it should be, 1 if not, 2 for a wrong
command line.

Example, after vx-sandbox --record r.bin --events e.jsonl:
  vx-case explain r.bin --config vx-simulator.conf --events e.jsonl)";

struct ExplainOptions
{
    std::string mRecording;
    std::string mConfiguration;
    std::string mDirectory;
    std::vector<std::string> mEvents;
    std::string mOutput; ///< empty for standard output
    bool mJson = false;
};

std::unique_ptr<explain::ExplanationOutput> makeOutput(const ExplainOptions& options,
                                                       const explain::PlayPlan& plan, bool isLive,
                                                       base::ResultFile& file)
{
    if (options.mJson) {
        return explain::explanationJson(file, isLive);
    }
    size_t width = 0;
    for (const explain::PlayedFile& it : plan.files()) {
        width = std::max(width, it.name().size());
    }
    return explain::explanationText(file, width, isLive);
}

/** A file that is read twice would give each command twice. */
void expectDifferent(const std::vector<std::string>& events)
{
    for (auto file = events.begin(); file != events.end(); ++file) {
        const auto again = std::find_if(file + 1, events.end(), [file](const std::string& other) {
            return files::areSameFile(*file, other);
        });
        if (again != events.end()) {
            throw CLI::ValidationError(
                "--events", *again + " is the same file as " + *file + ": name each file once");
        }
    }
}

void expectNoConflict(const ExplainOptions& options)
{
    CommandFiles files;
    files.addInput("the recording", options.mRecording);
    files.addCases(options.mConfiguration, options.mDirectory);
    for (const std::string& events : options.mEvents) {
        files.addInput("--events", events);
    }
    files.addOutput("-o", options.mOutput);
    files.expectNoConflict();
    expectDifferent(options.mEvents);
}

void explain(const ExplainOptions& options)
{
    expectNoConflict(options);
    const explain::PlayPlan plan(options.mConfiguration, options.mDirectory);
    explain::RecordingReader recording(options.mRecording);
    base::ResultFile result(options.mOutput);
    const auto output = makeOutput(options, plan, recording.isStream(), result);
    const bool isGood = explain::explainRecording(plan, recording, options.mEvents, *output);
    result.commit();
    if (!isGood) {
        throw base::EndWith(EXIT_FAILURE);
    }
}
} // namespace

void addExplainCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "explain", "Finds out what was played when, and whether it was played correctly");
    command.footer(kExplainFooter);
    const auto options = std::make_shared<ExplainOptions>();
    command
        .add_option("RECORDING", options->mRecording,
                    "Recording of the driver; - is standard input")
        ->required()
        ->type_name("");
    command.add_option("--config", options->mConfiguration, "Case configuration that was played")
        ->type_name("FILE")
        ->required();
    addDirectoryOption(command, options->mDirectory);
    CLI::Option& events =
        *command
             .add_option("--events", options->mEvents,
                         "Events of vx-sandbox or vx-control: commands, times of arrival, end of "
                         "the run; repeatable")
             ->type_name("FILE");
    takeOneValueEach(events);
    command.add_flag("--json", options->mJson, "Prints one JSON object per line");
    addOutputOption(command, options->mOutput);
    command.callback([options] { explain(*options); });
}

} // namespace commands
