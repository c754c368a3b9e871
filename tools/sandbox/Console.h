#pragma once

#include <string>

namespace sandbox {

/**
 * The output of the sandbox itself: messages on standard error, with a status line on a terminal,
 * which messages replace; results on standard output.
 */
class Console
{
public:
    Console();

    /** Prints one line, with the program's name in front. */
    void message(const std::string& text);

    /** Whether a status line is visible. */
    bool showsStatus() const { return mIsTerminal; }

    /** Replaces the status line. Requires: showsStatus(). */
    void status(const std::string& text);

    /** Removes the status line, so that others may print. */
    void clearStatus();

    /** Writes to standard output. Throws a std::system_error when not all of it can be written. */
    static void result(const std::string& text);

private:
    bool mIsTerminal;
    bool mHasStatus = false;
};

} // namespace sandbox
