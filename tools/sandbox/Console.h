#pragma once

#include <string>

namespace sandbox {

/**
 * What the sandbox itself says on standard error: messages, and where that is a terminal a status
 * line that is written over itself and makes way for messages.
 */
class Console
{
public:
    Console();

    /** Prints one line, with the program's name in front. */
    void message(const std::string& text);

    /** Whether somebody can see a status line. */
    bool showsStatus() const { return mIsTerminal; }

    /** Replaces the status line. Requires: showsStatus(). */
    void status(const std::string& text);

    /** Removes the status line, so that others may print. */
    void clearStatus();

private:
    bool mIsTerminal;
    bool mHasStatus = false;
};

} // namespace sandbox
