#include "Console.h"

#include <unistd.h>

#include <cstdio>

Console::Console() : mIsTerminal(isatty(STDERR_FILENO) == 1) {}

void Console::message(const std::string& text)
{
    clearStatus();
    std::fprintf(stderr, "vx-sandbox: %s\n", text.c_str());
}

/** The cursor goes back to the line's start, so that what the program prints does not follow. */
void Console::status(const std::string& text)
{
    std::fprintf(stderr, "\r\033[K%s\r", text.c_str());
    mHasStatus = true;
}

void Console::clearStatus()
{
    if (mHasStatus) {
        std::fputs("\r\033[K", stderr);
        mHasStatus = false;
    }
}
