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

/** What the command line says. */
struct Options
{
    DriverOutputs mOutputs;
    std::optional<std::int64_t> mRunNs; ///< how long the program runs after its first block ...
    std::int64_t mPatienceNs = 60 * kNanosecondsPerSecond; ///< ... which comes within this time
    std::vector<TimedCommand> mCommands;                   ///< in the order of their times
    std::vector<Fault> mFaults;                            ///< as they were given
    std::vector<std::string> mProgram;                     ///< the program's name and its arguments

    bool wantsPmeDevice() const { return !mOutputs.mPmePath.empty(); }
};

/**
 * Nothing when all that is asked for is the help or the version; they are printed. Throws a
 * std::runtime_error with one line on what is wrong.
 */
std::optional<Options> parseOptions(int argc, char** argv);

} // namespace sandbox
