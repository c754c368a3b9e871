#include "Console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "FileDescriptor.h"

namespace sandbox {

namespace {

/** Failures are ignored: there is nowhere to report them. */
void print(const std::string& text)
{
    std::fputs(text.c_str(), stderr);
}

} // namespace

Console::Console() : mIsTerminal(isatty(STDERR_FILENO) == 1) {}

void Console::message(const std::string& text)
{
    clearStatus();
    print(fmt::format("vx-sandbox: {}\n", text));
}

/** Returns the cursor to the start, so that output of the program overwrites the line. */
void Console::status(const std::string& text)
{
    print(fmt::format("\r\033[K{}\r", text));
    mHasStatus = true;
}

void Console::clearStatus()
{
    if (mHasStatus) {
        print("\r\033[K");
        mHasStatus = false;
    }
}

void Console::result(const std::string& text)
{
    if (!files::writeAll(STDOUT_FILENO, text)) {
        files::throwErrno("cannot write to standard output");
    }
}

} // namespace sandbox
