#include "base/ProgressLine.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace base {

namespace {
constexpr std::chrono::seconds kSilence{1};
constexpr std::chrono::milliseconds kBetweenDraws{100};
} // namespace

ProgressLine::ProgressLine(std::string what)
    : mWhat(std::move(what)),
      mOnTerminal(isatty(STDERR_FILENO) == 1),
      mNextDraw(Clock::now() + kSilence)
{
}

ProgressLine::~ProgressLine()
{
    if (mIsShown) {
        std::fputs("\r\033[K", stderr);
    }
}

void ProgressLine::show(double share)
{
    if (!mOnTerminal || Clock::now() < mNextDraw) {
        return;
    }
    mNextDraw = Clock::now() + kBetweenDraws;
    mIsShown = true;
    fmt::print(stderr, "\r{} {:3.0f} %\033[K", mWhat, share * 100.0);
    std::fflush(stderr);
}

} // namespace base
