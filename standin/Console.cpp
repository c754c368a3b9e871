#include "Console.h"

#include <fmt/format.h>
#include <unistd.h>

Console::Console() : mIsTerminal(isatty(STDERR_FILENO) == 1) {}

void Console::message(const std::string& text)
{
    clearStatus();
    fmt::print(stderr, "vx-sandbox: {}\n", text);
}

/** The cursor goes back to the line's start, so that what the program prints does not follow. */
void Console::status(const std::string& text)
{
    fmt::print(stderr, "\r\033[K{}\r", text);
    mHasStatus = true;
}

void Console::clearStatus()
{
    if (mHasStatus) {
        fmt::print(stderr, "\r\033[K");
        mHasStatus = false;
    }
}
