#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Clocks.h"
#include "SimulatedDriver.h"

namespace sandbox {

/** A command for the control FIFO and when it is due, counted from the first block. */
struct TimedCommand
{
    std::int64_t mDelayNs;
    std::string mText;
};

/** The options of the command line. */
struct Options
{
    DriverOutputs mOutputs;
    std::optional<std::int64_t> mRunNs; ///< how long the program runs after its first block
    std::int64_t mPatienceNs = 60 * kNanosecondsPerSecond; ///< how long --for waits for that block
    std::vector<TimedCommand> mCommands;                   ///< sorted by time
    bool mReadsCommands = false;                           ///< from standard input, until it ends
    std::vector<Fault> mFaults;                            ///< in the order given
    std::vector<std::string> mProgram;                     ///< the program's name and its arguments

    bool wantsPmeDevice() const { return !mOutputs.mPmePath.empty(); }
};

/**
 * Returns no value if only the help or the version was requested, which is then printed. Throws a
 * std::runtime_error with a message in one line, also if an output would overwrite another one or
 * an argument of the program.
 */
std::optional<Options> parseOptions(int argc, char** argv);

} // namespace sandbox
