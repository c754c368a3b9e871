#pragma once

#include <csignal>
#include <cstdint>
#include <optional>

#include "FileDescriptor.h"
#include "OperatorCommands.h"
#include "Options.h"
#include "ProgramProcess.h"

class Console;
class FuseServer;
class PrivateMounts;
class SimulatedDriver;

/**
 * Runs the program from its start to its end: one loop answers the driver's files, forwards
 * signals, and does what is due at its time. Everything it is given is borrowed for its life.
 */
class Supervisor
{
public:
    Supervisor(const Options& options, SimulatedDriver& driver, FuseServer& server,
               PrivateMounts& mounts, Console& console);

    /**
     * Returns the exit status of the sandbox. Throws a std::system_error when the program cannot
     * be forked or waited for.
     */
    int run();

private:
    void takeOverSignals();
    void restoreSignals() const;
    void waitForWork();
    void handleSignal();
    void forwardSignal(int number, bool isFromTerminal);

    void runTimers();
    void runEachSecond(std::int64_t nowNs);
    void endWhenDue(std::int64_t nowNs, std::int64_t elapsedNs);
    std::int64_t nextDeadlineNs() const;

    void reportEnd();
    bool isEndedByUs() const;
    int exitStatus() const;

    const Options& mOptions;
    SimulatedDriver& mDriver;
    FuseServer& mServer;
    PrivateMounts& mMounts;
    Console& mConsole;
    OperatorCommands mCommands;
    ProgramProcess mProgram;
    FileDescriptor mSignals;
    sigset_t mOldMask{};
    struct sigaction mOldPipeAction = {};
    bool mHasEnded = false;
    std::int64_t mNextSecondNs = 0;      ///< on the monotonic clock, as the next one
    std::optional<std::int64_t> mKillNs; ///< set once --for has sent its SIGTERM
    bool mIsKilled = false;
};
