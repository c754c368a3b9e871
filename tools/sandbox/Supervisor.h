#pragma once

#include <csignal>
#include <cstdint>
#include <optional>

#include "CommandInput.h"
#include "FileDescriptor.h"
#include "OperatorCommands.h"
#include "Options.h"
#include "ProgramProcess.h"
#include "RunOutcome.h"

namespace sandbox {

class Console;
class FuseServer;
class PrivateMounts;
class SimulatedDriver;

/**
 * Runs the program from start to end, in one loop: serves the driver's files, forwards signals,
 * sends the commands that are due, and ends the program when its time is over. Borrows all its
 * arguments for its life.
 */
class Supervisor
{
public:
    Supervisor(const Options& options, SimulatedDriver& driver, FuseServer& server,
               PrivateMounts& mounts, OperatorCommands& commands, Console& console);

    /**
     * Returns the exit status of the sandbox. Throws a std::system_error when the sandbox itself
     * fails: it cannot fork, wait, or print the summary.
     */
    int run();

private:
    void takeOverSignals();
    void restoreSignals() const;
    bool isOver() const;
    void waitForWork();
    void readStartReport();
    void handleSignal();
    void takeCommands();
    void forwardSignal(int number, bool isFromTerminal);

    void runTimers();
    void runEachSecond(std::int64_t nowNs);
    void endWhenDue(std::int64_t nowNs);
    void stop(StopReason reason);

    /** When the program gets its SIGTERM or, after that, its SIGKILL; nothing if it does not. */
    std::optional<std::int64_t> nextEndingNs() const;
    std::int64_t nextDeadlineNs() const;

    bool hasBlock() const;

    /** When the first block arrived. Requires: hasBlock(). */
    std::int64_t firstBlockNs() const;

    void finish();
    void reportEnd();
    void recordEnd();

    const Options& mOptions;
    SimulatedDriver& mDriver;
    FuseServer& mServer;
    PrivateMounts& mMounts;
    Console& mConsole;
    OperatorCommands& mCommands;
    CommandInput mInput;
    ProgramProcess mProgram;
    files::FileDescriptor mSignals;
    sigset_t mOldMask{};
    struct sigaction mOldPipeAction = {};
    std::int64_t mStartNs = 0;           ///< on the monotonic clock, as the next ones
    std::int64_t mNextSecondNs = 0;      ///< when the next once-a-second work is due
    std::optional<std::int64_t> mTermNs; ///< when it got a SIGTERM that may need a SIGKILL
    RunOutcome mOutcome;
};

} // namespace sandbox
