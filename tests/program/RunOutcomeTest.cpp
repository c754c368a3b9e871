#include "RunOutcome.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {
using sandbox::RunOutcome;
using sandbox::StopReason;

constexpr int exited(int status)
{
    return status << 8; // as waitpid has it
}

constexpr auto kTime = StopReason::TimeIsOver;
} // namespace

/** A program that crashes while it is being stopped has crashed. */
TEST(RunOutcomeTest, DistinguishesAStoppedProgramFromAnEndedOne)
{
    const struct
    {
        std::optional<StopReason> mStop;
        bool mIsKilled;
        int mInterrupt;
        int mWaitStatus;
        const char* mProgram; ///< what the events say of it, as one word and a value
        const char* mReason;
        int mExitStatus;
    } rows[] = {
        {{}, false, 0, exited(3), "exited 3", "program", 3},
        {{}, false, 0, SIGSEGV, "killed 11", "program", 139},
        {kTime, false, 0, exited(3), "stopped 0", "time", 0},
        {kTime, false, 0, SIGTERM, "stopped 0", "time", 0},
        {kTime, true, 0, SIGKILL, "stopped 9", "time", 0},
        {kTime, false, 0, SIGKILL, "killed 9", "program", 137},
        {kTime, true, 0, SIGSEGV, "killed 11", "program", 139},
        {StopReason::NoBlock, false, 0, SIGTERM, "stopped 0", "no block", 124},
        {{}, false, SIGINT, SIGINT, "stopped 0", "interrupted", 130},
        {{}, false, SIGINT, exited(5), "stopped 0", "interrupted", 5},
        {{}, false, SIGINT, SIGSEGV, "killed 11", "program", 139},
        {kTime, false, SIGINT, SIGTERM, "stopped 0", "time", 0},
    };
    for (const auto& row : rows) {
        RunOutcome outcome;
        if (row.mStop) {
            outcome.stopped(*row.mStop);
        }
        if (row.mIsKilled) {
            outcome.killed();
        }
        outcome.interrupted(row.mInterrupt);
        outcome.ended(row.mWaitStatus);
        const sandbox::ProgramEnd end = outcome.programEnd();
        const char* const kKinds[] = {"exited ", "killed ", "stopped "};
        EXPECT_EQ(kKinds[static_cast<int>(end.mKind)] + std::to_string(end.mValue), row.mProgram);
        EXPECT_STREQ(outcome.reason(), row.mReason) << row.mProgram;
        EXPECT_EQ(outcome.exitStatus(false), row.mExitStatus) << row.mProgram;
    }
}
