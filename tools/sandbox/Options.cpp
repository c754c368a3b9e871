#include "Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <sstream>
#include <stdexcept>

#include "CaseConfiguration.h"
#include "Console.h"
#include "FaultText.h"
#include "OutputCheck.h"
#include "Seconds.h"

namespace sandbox {

namespace {

constexpr char kDescription[] =
    "Runs PROGRAM with a simulated ADC driver at the fixed paths. /dev, /etc/vx and the\n"
    "driver's directory under /sys are private to it; the host is not changed.\n";

constexpr char kFooter[] =
    "Exit status: that of PROGRAM; 0 if --for ended it; 124 if --for found no block to count\n"
    "from; 128 + N if another signal N ended it; 125 if the sandbox itself fails, 126 if PROGRAM\n"
    "cannot be executed, 127 if it is not found.\n"
    "\n"
    "Example: play for 10 s, switch to configuration 2 after 3 s, record:\n"
    "  vx-sandbox --record samples.bin --for 10 --send 3:2 -- vx-simulator --config my.conf";

constexpr std::size_t kHelpColumn = 27;

TimedCommand parseCommand(const std::string& text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        throw std::runtime_error(fmt::format("--send takes SECONDS:COMMAND, not \"{}\"", text));
    }
    return {parseSeconds("--send", text.substr(0, colon)), text.substr(colon + 1)};
}

void addOutput(CLI::App& app, const std::string& name, std::string& path, const std::string& help)
{
    app.add_option(name, path, help)->type_name("FILE")->check([](const std::string& value) {
        return value.empty() ? "takes the name of a file" : "";
    });
}

template <typename Time>
CLI::Option* addSeconds(CLI::App& app, const std::string& name, Time& timeNs,
                        const std::string& help)
{
    const auto parse = [&timeNs, name](const std::string& text) {
        timeNs = parseSeconds(name, text);
    };
    return app.add_option_function<std::string>(name, parse, help)->type_name("SECONDS");
}

/** An option that may be repeated; `take` gets one value at a time. */
void addList(CLI::App& app, const std::string& name,
             const std::function<void(const std::string&)>& take, const std::string& type,
             const std::string& help)
{
    const auto takeAll = [take](const std::vector<std::string>& texts) {
        std::for_each(texts.begin(), texts.end(), take);
    };
    // Without the limit, PROGRAM would be taken as one more value.
    app.add_option_function<std::vector<std::string>>(name, takeAll, help)
        ->option_text(type)
        ->allow_extra_args(false);
}

void addOptions(CLI::App& app, Options& options)
{
    addOutput(app, "--record", options.mOutputs.mRecordPath,
              "write the sample stream as it arrives, 48-byte records only");
    addOutput(app, "--events", options.mOutputs.mEventsPath,
              "write one JSON object per line for every write and\ncommand, and for the end");
    addOutput(app, "--pme", options.mOutputs.mPmePath,
              "add /dev/pme-sim and write the frames that it receives");
    const auto takeCommand = [&options](const std::string& text) {
        if (text == "-") {
            options.mReadsCommands = true;
        } else {
            options.mCommands.push_back(parseCommand(text));
        }
    };
    addList(app, "--send", takeCommand, "SECONDS:COMMAND",
            "write COMMAND into the control FIFO, SECONDS after the\n"
            "first block; \"-\" writes the lines of standard input as\n"
            "they arrive, and ends PROGRAM at the end of the input");
    CLI::Option* const run = addSeconds(app, "--for", options.mRunNs,
                                        "end PROGRAM with SIGTERM, SECONDS after the first block");
    addSeconds(app, "--patience", options.mPatienceNs,
               "with --for: end PROGRAM if no block has arrived after\nSECONDS (default 60)")
        ->needs(run);
    const auto takeFault = [&options](const std::string& text) {
        options.mFaults.push_back(parseFault(text));
    };
    addList(app, "--fault", takeFault, "FILE:WHEN:WHAT[:COUNT]",
            "make COUNT writes to FILE (adc-in, ...) fail; WHEN is\n"
            "the number of the first one or, for example 2.5s, a\n"
            "time after the first block; WHAT is an errno by name,\n"
            "short=BYTES, stall=SECONDS or vanish; COUNT is 1 if\n"
            "not given, or \"on\" for all from then on");
}

/** The program and its arguments: all that the parser left over. */
std::vector<std::string> programOf(std::vector<std::string> words)
{
    if (!words.empty() && words.front() == "--") {
        words.erase(words.begin());
    } else if (!words.empty() && words.front().front() == '-') {
        throw std::runtime_error(fmt::format("unknown option {}; see --help", words.front()));
    }
    if (words.empty()) {
        throw std::runtime_error("there is no program to run; see --help");
    }
    return words;
}

/**
 * All file names that the program's command line may contain; "--config=FILE" gives two. The
 * program itself is a file only if its name has a slash; otherwise it is looked up in PATH.
 */
std::vector<std::string> filesNamedBy(const std::vector<std::string>& program)
{
    std::vector<std::string> names;
    for (const std::string& word : program) {
        names.push_back(word);
        const std::size_t equals = word.find('=');
        if (equals != std::string::npos) {
            names.push_back(word.substr(equals + 1));
        }
    }
    if (program.front().find('/') == std::string::npos) {
        names.erase(names.begin());
    }
    return names;
}

/** The values of --config on the program's command line, in the forms that vx-simulator accepts. */
std::vector<std::string> configurationsNamedBy(const std::vector<std::string>& program)
{
    const std::string option = "--config";
    std::vector<std::string> names;
    for (std::size_t i = 1; i < program.size(); ++i) {
        if (program[i] == option && i + 1 < program.size()) {
            names.push_back(program[i + 1]);
        } else if (program[i].compare(0, option.size() + 1, option + "=") == 0) {
            names.push_back(program[i].substr(option.size() + 1));
        }
    }
    return names;
}

/** Errors in the configuration are left to the program to report. */
void addValueFiles(const std::string& path, files::OutputCheck& check)
{
    using configuration::CaseConfiguration;
    CaseConfiguration::keepLogSilent();
    CaseConfiguration cases;
    cases.read(QString::fromStdString(path), CaseConfiguration::Rejected::Continue);
    for (const std::string& name : cases.valueFiles()) {
        check.addInput("the value file", name);
    }
}

/** Opening the outputs truncates them before the program can read its inputs. */
void checkOutputs(const Options& options)
{
    files::OutputCheck check;
    for (const std::string& name : filesNamedBy(options.mProgram)) {
        check.addInput("the program's argument", name);
    }
    for (const std::string& name : configurationsNamedBy(options.mProgram)) {
        addValueFiles(name, check);
    }
    check.addOutput("--record", options.mOutputs.mRecordPath);
    check.addOutput("--events", options.mOutputs.mEventsPath);
    check.addOutput("--pme", options.mOutputs.mPmePath);
    const std::string conflict = check.conflict();
    if (!conflict.empty()) {
        throw std::runtime_error(conflict);
    }
}

} // namespace

std::optional<Options> parseOptions(int argc, char** argv)
{
    Options options;
    CLI::App app(kDescription, "vx-sandbox");
    app.footer(kFooter);
    app.get_formatter()->label("OPTIONS", "OPTION]... [--] PROGRAM [ARGUMENT...");
    app.get_formatter()->column_width(kHelpColumn);
    app.set_help_flag("-h,--help", "print this help");
    app.set_version_flag("-v,--version", "vx-sandbox " VX_VERSION, "print the version");
    app.prefix_command();
    addOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        std::ostringstream text;
        app.exit(wish, text);
        Console::result(text.str());
        return std::nullopt;
    }
    options.mProgram = programOf(app.remaining());
    checkOutputs(options);
    std::stable_sort(options.mCommands.begin(), options.mCommands.end(),
                     [](const TimedCommand& left, const TimedCommand& right) {
                         return left.mDelayNs < right.mDelayNs;
                     });
    return options;
}

} // namespace sandbox
