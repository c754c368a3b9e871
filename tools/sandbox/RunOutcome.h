#pragma once

#include <optional>

#include "EventLog.h"
#include "ProgramProcess.h"

namespace sandbox {

/** Why the sandbox ends the program. */
enum class StopReason
{
    TimeIsOver, ///< of --for
    NoBlock,    ///< within the patience
    InputEnded, ///< standard input with the commands has ended
};

/**
 * How a run ended: how the sandbox ended it, and how the program ended. Derives the reason in the
 * events and the exit status. Only keeps facts: ends and reports nothing itself.
 */
class RunOutcome
{
public:
    /** The sandbox has sent SIGTERM to the program. */
    void stopped(StopReason reason) { mStop = reason; }

    /** The sandbox has sent SIGKILL, because SIGTERM did not help. */
    void killed() { mIsKilled = true; }

    /** The sandbox itself got a signal that asks it to end. */
    void interrupted(int signal) { mInterrupt = signal; }

    /** The program has ended; `waitStatus` is as waitpid gives it. */
    void ended(int waitStatus) { mWaitStatus = waitStatus; }

    void failedToStart(const StartFailure& failure) { mStartFailure = failure; }

    bool isStopped() const { return mStop.has_value(); }
    const std::optional<StartFailure>& startFailure() const { return mStartFailure; }

    /** The signal that ended the program and was not the sandbox's, if one did. */
    std::optional<int> crashSignal() const;

    /** How the program ended. Requires: it was started, and has ended. */
    ProgramEnd programEnd() const;

    /** The run's reason in the events. */
    const char* reason() const;

    /**
     * The sandbox's exit status, if the program decides it. `lacksBlock` is true if the run was to
     * be timed from a block that never arrived.
     */
    int exitStatus(bool lacksBlock) const;

private:
    bool endedByStop() const;
    bool endedByInterrupt() const;

    std::optional<StopReason> mStop;
    bool mIsKilled = false;
    int mInterrupt = 0; ///< 0 means none
    int mWaitStatus = 0;
    std::optional<StartFailure> mStartFailure;
};

} // namespace sandbox
