#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "Files.h"

using Words = std::vector<std::string>;

/** The parts of a text between the separators; nothing after a last separator. */
Words split(const std::string& text, char separator = ' ');

/** How a command ended and what it wrote. Prints itself whole, for a failing test. */
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
 * directory too, so that nothing of the user's reaches a command.
 */
class CommandRunner
{
public:
    std::string path(const std::string& name) const { return mFiles.path(name); }
    void writeFile(const std::string& name, const std::string& content) const;

    /** Empty when there is no such file. */
    std::string readFile(const std::string& name) const;

    /**
     * Runs `command` to its end. One that does not end in 30 s is killed, with all it started,
     * and fails the test.
     *
     * @param prepare called in the process that then becomes the command; an exception out of it
     * goes to standard error and gives the exit code 125
     */
    CommandResult run(const Words& command, const std::function<void()>& prepare = {}) const;

private:
    [[noreturn]] void become(const Words& command, const std::function<void()>& prepare) const;

    TestFiles mFiles;
};
