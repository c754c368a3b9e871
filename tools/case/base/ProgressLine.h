#pragma once

#include <chrono>
#include <string>

namespace base {

/**
 * A line on standard error with how far a command is: "reading 42 %". Only on a terminal
 * and only once the command has taken longer than a second; it is cleared at the end.
 */
class ProgressLine
{
public:
    /** @param what for example "reading" */
    explicit ProgressLine(std::string what);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    /** @param share how much is done, 0 to 1. May be called often: it draws at most 10 times a
     * second. */
    void show(double share);

private:
    using Clock = std::chrono::steady_clock;

    std::string mWhat;
    bool mOnTerminal;
    bool mIsShown = false;
    Clock::time_point mNextDraw;
};

} // namespace base
