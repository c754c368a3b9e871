#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "FileDescriptor.h"

namespace sandbox {

/** Exit statuses of the sandbox's own, as env and timeout have them. */
inline constexpr int kExitNoBlock = 124;
inline constexpr int kExitSandboxFailed = 125;
inline constexpr int kExitCannotExecute = 126;
inline constexpr int kExitNotFound = 127;
inline constexpr int kExitSignalBase = 128;

/** Why a program did not start: the exit status that says so, and one line. */
struct StartFailure
{
    int mExitStatus;
    std::string mText;
};

/**
 * The program the sandbox runs: a child process that prepares itself, becomes the program, and
 * dies with the sandbox. Its end is to be waited for by reap(), called upon SIGCHLD. Processes
 * that it leaves behind, or that leave some themselves, become children of the sandbox.
 */
class ProgramProcess
{
public:
    /**
     * Forks. The child calls `prepare`, restores the signals to what `restoreSignals` makes of
     * them, and executes `command` (looked up in PATH). Either may throw in the child. Throws a
     * std::system_error when there is no child. Requires: one thread; `command` is not empty.
     */
    void start(const std::vector<std::string>& command, const std::function<void()>& prepare,
               const std::function<void()>& restoreSignals);

    /** Readable when the start has succeeded or failed; -1 once that is known. */
    int startReport() const { return mReport.get(); }

    /** Takes the start's report; requires that startReport() is readable. */
    void readStartReport();

    /** The failure, if the program could not be started. */
    const std::optional<StartFailure>& startFailure() const { return mStartFailure; }

    /** Sends a signal, if the program has not ended. */
    void signal(int number) const;

    /** Takes notice of the ends of the program and of what it left behind. */
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
    std::vector<pid_t> mOlderChildren; ///< of whoever has become the sandbox
    pid_t mPid = -1;
    bool mHasEnded = false;
    int mWaitStatus = 0;
    FileDescriptor mReport;
    std::string mReportText;
    std::optional<StartFailure> mStartFailure;
};

} // namespace sandbox
