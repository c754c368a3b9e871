#pragma once

#include <ostream>
#include <string>

#include "Files.h"

/** The result and output of a command. Can be printed, for a failing test. */
struct CommandResult
{
    int mExitCode = -1;     ///< -1 when a signal ended it
    double mSeconds = 0;    ///< from its start to its end
    double mCpuSeconds = 0; ///< computing time, with that of the processes it waited for
    std::string mOutput;
    std::string mErrors;

    friend std::ostream& operator<<(std::ostream& stream, const CommandResult& result);
};

/**
 * Runs commands in a temporary directory of its own, which goes away with the object. HOME is that
 * directory as well, so that no file of the user affects a command.
 */
class CommandRunner
{
public:
    std::string path(const std::string& name) const { return mFiles.path(name); }
    void writeFile(const std::string& name, const std::string& content) const;

    /** Empty when there is no such file. */
    std::string readFile(const std::string& name) const;

    /** Runs `command` to its end. One that hangs is killed and fails the test. */
    CommandResult run(const Words& command) const;

private:
    TestFiles mFiles;
};
