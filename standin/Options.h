#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "SimulatedDriver.h"

/** A command for the control FIFO and when it is due, counted from the first block. */
struct TimedCommand
{
    std::int64_t mDelayNs;
    std::string mText;
};

/** What the command line says. */
struct Options
{
    bool mWantsHelp = false;
    DriverOutputs mOutputs;
    std::optional<std::int64_t> mRunNs;  ///< how long the program runs after its first block
    std::vector<TimedCommand> mCommands; ///< in the order of their times
    std::vector<Fault> mFaults;          ///< as they were given
    std::vector<std::string> mProgram;   ///< the program's name and its arguments

    bool wantsPmeDevice() const { return !mOutputs.mPmePath.empty(); }
};

/** Throws a std::runtime_error with one line on what is wrong. */
Options parseOptions(int argc, char** argv);

/** What --help prints. */
const char* helpText();
