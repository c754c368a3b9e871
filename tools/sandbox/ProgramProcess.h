#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "FileDescriptor.h"

namespace sandbox {

/** Exit statuses of the sandbox itself, as env and timeout have them. */
inline constexpr int kExitNoBlock = 124;
inline constexpr int kExitSandboxFailed = 125;
inline constexpr int kExitCannotExecute = 126;
inline constexpr int kExitNotFound = 127;
inline constexpr int kExitSignalBase = 128;

/** Why a program did not start: the exit status for it, and one line. */
struct StartFailure
{
    int mExitStatus;
    std::string mText;
};

/**
 * The program that the sandbox runs: a child process that prepares itself, becomes the program, and
 * dies with the sandbox. reap() is to be called on SIGCHLD. Processes that the program leaves
 * running become children of the sandbox.
 */
class ProgramProcess
{
public:
    /**
     * Forks. The child calls `prepare` and `restoreSignals`, either of which may throw, and
     * executes `command` (looked up in PATH). Throws a std::system_error when it cannot fork.
     * Requires: one thread; `command` is not empty.
     */
    void start(const std::vector<std::string>& command, const std::function<void()>& prepare,
               const std::function<void()>& restoreSignals);

    /** A descriptor, readable when the start has succeeded or failed; -1 once that is known. */
    int startReport() const { return mReport.get(); }

    /** Reads whether the start has succeeded. Requires: startReport() is readable. */
    void readStartReport();

    /** The failure, if the program could not be started. */
    const std::optional<StartFailure>& startFailure() const { return mStartFailure; }

    /** Sends a signal, if the program has not ended. */
    void signal(int number) const;

    /** Collects the exit statuses of the program and of what it left behind. */
    void reap();
    bool hasEnded() const { return mHasEnded; }

    /** As waitpid gives it. Requires: hasEnded(). */
    int waitStatus() const { return mWaitStatus; }

    /**
     * Kills what the program has left behind; returns whether any of it is still there. Requires:
     * hasEnded().
     */
    bool killLeftBehind() const;

    pid_t pid() const { return mPid; }

private:
    std::vector<pid_t> mOlderChildren; ///< of the process before it became the sandbox
    pid_t mPid = -1;
    bool mHasEnded = false;
    int mWaitStatus = 0;
    files::FileDescriptor mReport;
    std::string mReportText;
    std::optional<StartFailure> mStartFailure;
};

} // namespace sandbox
