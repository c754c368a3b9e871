#include "Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>
#include <stdexcept>

#include "Clocks.h"
#include "Console.h"
#include "OutputCheck.h"
#include "SampleRecord.h"

namespace sandbox {

namespace {

constexpr char kDescription[] =
    "Runs PROGRAM with a simulated ADC driver at the fixed paths. /dev, /etc/vx and the\n"
    "driver's directory under /sys are private to it; nothing changes on the host.\n";

constexpr char kFooter[] =
    "Exit status: PROGRAM's; 0 if --for ended it; 124 if --for found no block to count from;\n"
    "128 and the signal's number if a signal of its own ended it; 125 if the sandbox itself\n"
    "fails, 126 if PROGRAM cannot be executed, 127 if it is not found.\n"
    "\n"
    "Example: play for 10 s, switch to configuration 2 after 3 s, keep what arrived:\n"
    "  vx-sandbox --record samples.bin --for 10 --send 3:2 -- vx-simulator --config my.conf";

constexpr std::size_t kHelpColumn = 27;
constexpr double kLongestSeconds = 1e9;

/** Decimal seconds such as 3 or 0.25, whole and within bounds, in nanoseconds. */
std::int64_t parseSeconds(const std::string& option, const std::string& text)
{
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc{} || rest != end || !(seconds >= 0 && seconds <= kLongestSeconds)) {
        throw std::runtime_error(
            fmt::format("{} takes seconds, 0 to 1000000000, not \"{}\"", option, text));
    }
    return std::llround(seconds * static_cast<double>(kNanosecondsPerSecond));
}

TimedCommand parseCommand(const std::string& text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        throw std::runtime_error(fmt::format("--send takes SECONDS:COMMAND, not \"{}\"", text));
    }
    return {parseSeconds("--send", text.substr(0, colon)), text.substr(colon + 1)};
}

/** All digits, and at least one. */
std::optional<std::uint64_t> parseCount(const std::string& text)
{
    std::uint64_t count = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    return error == std::errc{} && rest == end ? std::optional(count) : std::nullopt;
}

/** One part at least. */
std::vector<std::string> splitAtColons(const std::string& text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text + ':');
    for (std::string part; std::getline(stream, part, ':');) {
        parts.push_back(part);
    }
    return parts;
}

/** The errno of that name, 0 if there is none. */
int errnoOf(const std::string& name)
{
    constexpr int kMaxErrno = 511; // what the kernel lets a file system answer
    for (int error = 1; error <= kMaxErrno; ++error) {
        const char* const known = strerrorname_np(error);
        if (known != nullptr && name == known) {
            return error;
        }
    }
    return 0;
}

bool parseFaultMoment(const std::string& text, Fault& fault)
{
    if (!text.empty() && text.back() == 's') {
        fault.mDelayNs = parseSeconds("--fault", text.substr(0, text.size() - 1));
        return true;
    }
    fault.mWrite = parseCount(text).value_or(0);
    return fault.mWrite > 0;
}

bool parseFaultKind(const std::string& text, Fault& fault)
{
    constexpr char kShort[] = "short=";
    constexpr char kStall[] = "stall=";
    const std::string value = text.substr(std::min(text.size(), std::strlen(kShort)));
    fault.mWhat = text;
    if (text.rfind(kShort, 0) == 0) {
        const std::optional<std::uint64_t> bytes = parseCount(value);
        fault.mKind = FaultKind::Short;
        fault.mBytes = static_cast<std::size_t>(bytes.value_or(0));
        return bytes && (fault.mFile != DriverFile::AdcIn || *bytes % sizeof(SampleRecord) == 0);
    }
    if (text.rfind(kStall, 0) == 0) {
        fault.mKind = FaultKind::Stall;
        fault.mStallNs = parseSeconds("--fault", value);
        return true;
    }
    fault.mKind = text == "vanish" ? FaultKind::Vanish : FaultKind::Error;
    fault.mError = text == "vanish" ? ENODEV : errnoOf(text);
    return fault.mError != 0;
}

bool parseFaultCount(const std::string& text, Fault& fault)
{
    fault.mLeft =
        text == "on" ? std::numeric_limits<std::uint64_t>::max() : parseCount(text).value_or(0);
    return fault.mLeft > 0;
}

Fault parseFault(const std::string& text)
{
    const std::vector<std::string> parts = splitAtColons(text);
    const std::optional<DriverFile> file = driverFileNamed(parts[0]);
    Fault fault;
    fault.mText = text;
    fault.mFile = file.value_or(DriverFile::AdcIn);
    const bool isRight = file && (parts.size() == 3 || parts.size() == 4) &&
                         parseFaultMoment(parts[1], fault) && parseFaultKind(parts[2], fault) &&
                         (parts.size() == 3 || parseFaultCount(parts[3], fault));
    if (!isRight) {
        throw std::runtime_error(
            "--fault takes FILE:WHEN:WHAT[:COUNT], such as adc-in:100:EIO:3, r2h:2.5s:vanish:on or "
            "adc-in:1:short=4800 (of adc-in whole records of 48 bytes), not \"" +
            text + "\"");
    }
    return fault;
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

/** An option that may be given any number of times, with one value each. */
template <typename Item>
void addList(CLI::App& app, const std::string& name, std::vector<Item>& items,
             Item (*parse)(const std::string&), const std::string& type, const std::string& help)
{
    const auto parseAll = [&items, parse](const std::vector<std::string>& texts) {
        std::transform(texts.begin(), texts.end(), std::back_inserter(items), parse);
    };
    // Without the limit it would take PROGRAM for a further value.
    app.add_option_function<std::vector<std::string>>(name, parseAll, help)
        ->type_name(type)
        ->allow_extra_args(false);
}

void addOptions(CLI::App& app, Options& options)
{
    addOutput(app, "--record", options.mOutputs.mRecordPath,
              "write the sample stream as it arrives, 48-byte records only");
    addOutput(app, "--events", options.mOutputs.mEventsPath,
              "write one JSON object a line for every write");
    addOutput(app, "--pme", options.mOutputs.mPmePath,
              "add /dev/pme-sim and write the frames it gets");
    addList(app, "--send", options.mCommands, parseCommand, "SECONDS:COMMAND",
            "write COMMAND into the control FIFO, SECONDS after the\nfirst block");
    CLI::Option* const run = addSeconds(app, "--for", options.mRunNs,
                                        "end PROGRAM with SIGTERM, SECONDS after the first block");
    addSeconds(app, "--patience", options.mPatienceNs,
               "end PROGRAM when no block comes for so long, 60 if not\ngiven")
        ->needs(run);
    addList(app, "--fault", options.mFaults, parseFault, "FILE:WHEN:WHAT[:COUNT]",
            "let writes to FILE (adc-in, ...) go wrong from the\n"
            "WHEN-th on, or from WHEN (such as 2.5s) after the first\n"
            "block: an errno by name, short=BYTES, stall=SECONDS or\n"
            "vanish; COUNT writes, 1 if not given, or \"on\" for ever");
}

/** What the parser left over, word by word as it was given. */
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
 * What a word of the program's command line may name: "--config=FILE" is two candidates. The
 * program's own name is looked up in PATH unless it has a slash.
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

/** Opening the outputs empties them, before the program can read what it is given. */
void checkOutputs(const Options& options)
{
    files::OutputCheck check;
    for (const std::string& name : filesNamedBy(options.mProgram)) {
        check.addInput("the program's argument", name);
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
    app.set_help_flag("-h,--help", "print this");
    app.set_version_flag("--version", "vx-sandbox " VX_VERSION, "print the version");
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
