#include "RunOutcome.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>

namespace sandbox {

namespace {
const char* stopReasonName(StopReason reason)
{
    switch (reason) {
        case StopReason::NoBlock:
            return "no block";
        case StopReason::InputEnded:
            return "input ended";
        case StopReason::TimeIsOver:
            break;
    }
    return "time";
}
} // namespace

std::optional<int> RunOutcome::crashSignal() const
{
    const bool isOurs = !WIFSIGNALED(mWaitStatus) || endedByStop();
    return isOurs ? std::nullopt : std::optional(WTERMSIG(mWaitStatus));
}

ProgramEnd RunOutcome::programEnd() const
{
    if (endedByStop() || endedByInterrupt()) {
        const bool tookKill = WIFSIGNALED(mWaitStatus) && WTERMSIG(mWaitStatus) == SIGKILL;
        return {ProgramEnd::Kind::Stopped, tookKill ? SIGKILL : 0};
    }
    if (WIFSIGNALED(mWaitStatus)) {
        return {ProgramEnd::Kind::Killed, WTERMSIG(mWaitStatus)};
    }
    return {ProgramEnd::Kind::Exited, WEXITSTATUS(mWaitStatus)};
}

const char* RunOutcome::reason() const
{
    if (mStartFailure) {
        return mStartFailure->mExitStatus == kExitSandboxFailed ? "error" : "not started";
    }
    if (endedByStop()) {
        return stopReasonName(*mStop);
    }
    return endedByInterrupt() ? "interrupted" : "program";
}

int RunOutcome::exitStatus(bool lacksBlock) const
{
    if (mStartFailure) {
        return mStartFailure->mExitStatus;
    }
    if (endedByStop()) {
        return mStop == StopReason::NoBlock ? kExitNoBlock : EXIT_SUCCESS;
    }
    if (WIFSIGNALED(mWaitStatus)) {
        return kExitSignalBase + WTERMSIG(mWaitStatus);
    }
    const int status = WEXITSTATUS(mWaitStatus);
    return status == EXIT_SUCCESS && lacksBlock ? kExitNoBlock : status;
}

/** False for a program that crashes while it is being stopped: that counts as ended by itself. */
bool RunOutcome::endedByStop() const
{
    const bool isOurSignal = !WIFSIGNALED(mWaitStatus) || WTERMSIG(mWaitStatus) == SIGTERM ||
                             (mIsKilled && WTERMSIG(mWaitStatus) == SIGKILL);
    return mStop && isOurSignal;
}

bool RunOutcome::endedByInterrupt() const
{
    return mInterrupt != 0 && (!WIFSIGNALED(mWaitStatus) || WTERMSIG(mWaitStatus) == mInterrupt);
}

} // namespace sandbox
