#include "Options.h"

#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "Clocks.h"
#include "SampleRecord.h"

namespace {

constexpr char kHelp[] =
    "Usage: vx-sandbox [OPTION]... [--] PROGRAM [ARGUMENT]...\n"
    "\n"
    "Runs PROGRAM with a simulated ADC driver at the fixed paths. /dev, /etc/vx and the\n"
    "driver's directory under /sys are private to it; nothing changes on the host.\n"
    "\n"
    "  --record FILE            write the sample stream as it arrives, 48-byte records only\n"
    "  --events FILE            write one JSON object a line for every write\n"
    "  --pme FILE               add /dev/pme-sim and write the frames it gets\n"
    "  --send SECONDS:COMMAND   write COMMAND into the control FIFO, SECONDS after the first\n"
    "                           block (any number of these)\n"
    "  --for SECONDS            end PROGRAM with SIGTERM, SECONDS after the first block\n"
    "  --fault FILE:WHEN:WHAT[:COUNT]   let writes to FILE (adc-in, ...) go wrong from the "
    "WHEN-th\n"
    "                           on, or from WHEN (such as 2.5s) after the first block: an errno "
    "by\n"
    "                           name, short=BYTES, stall=SECONDS or vanish; COUNT writes, 1 if "
    "not\n"
    "                           given, or \"on\" for ever (any number of these)\n"
    "  --help                   print this\n"
    "\n"
    "Exit status: PROGRAM's; 0 if --for ended it; 128 and the signal's number if a signal of\n"
    "its own did; 125 if the sandbox itself fails, 126 if PROGRAM cannot be executed, 127 if it\n"
    "is not found.\n"
    "\n"
    "Example: play for 10 s, switch to configuration 2 after 3 s, keep what arrived:\n"
    "  vx-sandbox --record samples.bin --for 10 --send 3:2 -- vx-simulator --config my.conf\n";

constexpr double kLongestSeconds = 1e9;

constexpr option kOptions[] = {
    {"record", required_argument, nullptr, 'r'}, {"events", required_argument, nullptr, 'e'},
    {"pme", required_argument, nullptr, 'p'},    {"send", required_argument, nullptr, 's'},
    {"for", required_argument, nullptr, 'f'},    {"fault", required_argument, nullptr, 'x'},
    {"help", no_argument, nullptr, 'h'},         {nullptr, 0, nullptr, 0},
};

/** Decimal seconds such as 3 or 0.25, whole and within bounds, in nanoseconds. */
std::int64_t parseSeconds(const std::string& option, const std::string& text)
{
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc{} || rest != end || !(seconds >= 0 && seconds <= kLongestSeconds)) {
        throw std::runtime_error(option + " takes seconds, 0 to 1000000000, not \"" + text + "\"");
    }
    return std::llround(seconds * static_cast<double>(kNanosecondsPerSecond));
}

TimedCommand parseCommand(const std::string& text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        throw std::runtime_error("--send takes SECONDS:COMMAND, not \"" + text + "\"");
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

std::vector<std::string> splitAtColons(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char letter : text) {
        if (letter == ':') {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

/** The errno of that name, 0 if there is none. */
int errnoOf(const std::string& name)
{
    constexpr int kMostErrno = 511; // what the kernel lets a file system answer
    for (int error = 1; error <= kMostErrno; ++error) {
        const char* const known = strerrorname_np(error);
        if (known != nullptr && name == known) {
            return error;
        }
    }
    return 0;
}

bool parseFaultFile(const std::string& text, Fault& fault)
{
    for (const DriverFile file : driverFiles(true)) {
        if (driverFileName(file) == text) {
            fault.mFile = file;
            return true;
        }
    }
    return false;
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
    Fault fault;
    fault.mText = text;
    const std::vector<std::string> parts = splitAtColons(text);
    const bool isRight = (parts.size() == 3 || parts.size() == 4) &&
                         parseFaultFile(parts[0], fault) && parseFaultMoment(parts[1], fault) &&
                         parseFaultKind(parts[2], fault) &&
                         (parts.size() == 3 || parseFaultCount(parts[3], fault));
    if (!isRight) {
        throw std::runtime_error(
            "--fault takes FILE:WHEN:WHAT[:COUNT], such as adc-in:100:EIO:3, r2h:2.5s:vanish:on or "
            "adc-in:1:short=4800 (of adc-in whole records of 48 bytes), not \"" +
            text + "\"");
    }
    return fault;
}

std::string parsePath(const std::string& option, const std::string& text)
{
    if (text.empty()) {
        throw std::runtime_error(option + " takes the name of a file");
    }
    return text;
}

void applyOption(int option, const std::string& value, const std::string& asWritten,
                 Options& options)
{
    switch (option) {
        case 'r':
            options.mOutputs.mRecordPath = parsePath("--record", value);
            return;
        case 'e':
            options.mOutputs.mEventsPath = parsePath("--events", value);
            return;
        case 'p':
            options.mOutputs.mPmePath = parsePath("--pme", value);
            return;
        case 's':
            options.mCommands.push_back(parseCommand(value));
            return;
        case 'f':
            options.mRunNs = parseSeconds("--for", value);
            return;
        case 'x':
            options.mFaults.push_back(parseFault(value));
            return;
        case 'h':
            options.mWantsHelp = true;
            return;
        case ':':
            throw std::runtime_error(asWritten + " needs a value; see --help");
        default:
            throw std::runtime_error("unknown option " + asWritten + "; see --help");
    }
}

} // namespace

Options parseOptions(int argc, char** argv)
{
    Options options;
    opterr = 0;
    while (true) {
        const int at = optind;
        // The "+" leaves the options after the program's name to the program.
        const int option = getopt_long(argc, argv, "+:", kOptions, nullptr);
        if (option == -1) {
            break;
        }
        applyOption(option, optarg != nullptr ? optarg : "", argv[at], options);
    }
    options.mProgram.assign(argv + optind, argv + argc);
    if (options.mProgram.empty() && !options.mWantsHelp) {
        throw std::runtime_error("there is no program to run; see --help");
    }
    std::stable_sort(options.mCommands.begin(), options.mCommands.end(),
                     [](const TimedCommand& left, const TimedCommand& right) {
                         return left.mDelayNs < right.mDelayNs;
                     });
    return options;
}

const char* helpText()
{
    return kHelp;
}
