#pragma once

#include <chrono>
#include <string>

namespace base {

/**
 * A progress line on standard error: "reading 42 %". It is shown only on a terminal, and only once
 * the command has taken longer than a second; it is cleared at the end.
 */
class ProgressLine
{
public:
    /** @param what for example "reading" */
    explicit ProgressLine(std::string what);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    /** @param share done, 0 to 1. May be called often: it draws at most 10 times per second. */
    void show(double share);

private:
    using Clock = std::chrono::steady_clock;

    std::string mWhat;
    bool mOnTerminal;
    bool mIsShown = false;
    Clock::time_point mNextDraw;
};

} // namespace base
