#include "Supervisor.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

#include "Console.h"
#include "FixedPaths.h"
#include "FuseServer.h"
#include "PrivateMounts.h"
#include "SimulatedDriver.h"
#include "Summary.h"

namespace sandbox {

namespace {

/** How long the program may take to end after SIGTERM before it is killed. */
constexpr std::int64_t kGraceNs = 5 * kNanosecondsPerSecond;

timespec toTimespec(std::int64_t nanoseconds)
{
    return {static_cast<time_t>(nanoseconds / kNanosecondsPerSecond),
            static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
}

/** The program must not read the sandbox's input, which holds the commands. */
void closeStandardInput()
{
    const files::FileDescriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!nothing.isOpen() || dup2(nothing.get(), STDIN_FILENO) < 0) {
        files::throwErrno("cannot open /dev/null");
    }
}

/** A mount may have covered the working directory; changing to its name enters the new one. */
void reenterWorkingDirectory()
{
    std::filesystem::current_path(std::filesystem::current_path());
}

} // namespace

Supervisor::Supervisor(const Options& options, SimulatedDriver& driver, FuseServer& server,
                       PrivateMounts& mounts, OperatorCommands& commands, Console& console)
    : mOptions(options),
      mDriver(driver),
      mServer(server),
      mMounts(mounts),
      mConsole(console),
      mCommands(commands),
      mInput(options.mReadsCommands)
{
}

int Supervisor::run()
{
    takeOverSignals();
    const auto prepare = [this] {
        mServer.bindFiles(mMounts);
        reenterWorkingDirectory();
        if (mOptions.mReadsCommands) {
            closeStandardInput();
        }
    };
    mProgram.start(mOptions.mProgram, prepare, [this] { restoreSignals(); });
    mStartNs = monotonicNs();
    mNextSecondNs = mStartNs + kNanosecondsPerSecond;
    while (!isOver()) {
        waitForWork();
        runTimers();
    }
    finish();
    if (!mOutcome.startFailure()) {
        Console::result(summaryText(mDriver, mOptions.wantsPmeDevice()));
    }
    const bool lacksBlock = mOptions.mRunNs && !hasBlock();
    return mDriver.hasFailedOutput() && !mOutcome.startFailure() ? kExitSandboxFailed
                                                                 : mOutcome.exitStatus(lacksBlock);
}

/** Serves until the remaining processes are gone: they may be blocked in a write when killed. */
bool Supervisor::isOver() const
{
    return mProgram.hasEnded() && mProgram.startReport() < 0 && !mProgram.killLeftBehind();
}

void Supervisor::takeOverSignals()
{
    // With an inherited SIG_IGN for SIGCHLD, the kernel would discard the exit status.
    std::signal(SIGCHLD, SIG_DFL);
    struct sigaction ignore
    {
    };
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &mOldPipeAction);

    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, &mOldMask);
    mSignals = files::FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!mSignals.isOpen()) {
        files::throwErrno("cannot wait for signals");
    }
}

void Supervisor::restoreSignals() const
{
    sigaction(SIGPIPE, &mOldPipeAction, nullptr);
    sigprocmask(SIG_SETMASK, &mOldMask, nullptr);
}

void Supervisor::waitForWork()
{
    std::array<pollfd, 4> files = {{{mServer.descriptor(), POLLIN, 0},
                                    {mSignals.get(), POLLIN, 0},
                                    {mProgram.startReport(), POLLIN, 0},
                                    {mInput.descriptor(), POLLIN, 0}}};
    const timespec wait = toTimespec(std::max<std::int64_t>(nextDeadlineNs() - monotonicNs(), 0));
    if (ppoll(files.data(), files.size(), &wait, nullptr) < 0) {
        if (errno == EINTR) {
            return;
        }
        files::throwErrno("cannot wait for the program");
    }
    if (files[0].revents != 0) {
        mServer.serveOne();
    }
    mServer.giveAnswersDue(monotonicNs());
    if (files[1].revents != 0) {
        handleSignal();
    }
    if (files[2].revents != 0) {
        readStartReport();
    }
    if (files[3].revents != 0) {
        takeCommands();
    }
}

/** Ends the program when no more commands can come. */
void Supervisor::takeCommands()
{
    for (const std::string& command : mInput.takeLines()) {
        mCommands.send(command);
    }
    if (mInput.descriptor() < 0 && !mOutcome.isStopped()) {
        stop(StopReason::InputEnded);
    }
}

void Supervisor::readStartReport()
{
    mProgram.readStartReport();
    if (mProgram.startReport() < 0 && !mProgram.startFailure()) {
        mConsole.message(fmt::format("from another terminal the control FIFO is /proc/{}/root{}",
                                     mProgram.pid(), kControlFifoPath));
    }
}

void Supervisor::handleSignal()
{
    signalfd_siginfo info{};
    if (read(mSignals.get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
        return;
    }
    if (info.ssi_signo == SIGCHLD) {
        mProgram.reap();
        return;
    }
    const int number = static_cast<int>(info.ssi_signo);
    mOutcome.interrupted(number);
    forwardSignal(number, info.ssi_code == SI_KERNEL);
}

/** The terminal has already signalled the program. A second signal could have another meaning. */
void Supervisor::forwardSignal(int number, bool isFromTerminal)
{
    if (!isFromTerminal) {
        mProgram.signal(number);
    }
}

void Supervisor::runTimers()
{
    const std::int64_t nowNs = monotonicNs();
    if (!mProgram.hasEnded()) {
        if (hasBlock()) {
            mCommands.sendDue(nowNs - firstBlockNs());
        }
        endWhenDue(nowNs);
    }
    if (nowNs >= mNextSecondNs) {
        runEachSecond(nowNs);
    }
}

void Supervisor::runEachSecond(std::int64_t nowNs)
{
    mDriver.flush();
    if (mConsole.showsStatus()) {
        mConsole.status(statusText(mDriver.statistics(), {realtimeNs(), nowNs}));
    }
    // After a pause (a suspended process), missed seconds are skipped.
    mNextSecondNs = std::max(mNextSecondNs + kNanosecondsPerSecond, nowNs);
}

void Supervisor::endWhenDue(std::int64_t nowNs)
{
    if (nowNs < nextEndingNs().value_or(std::numeric_limits<std::int64_t>::max())) {
        return;
    }
    if (mTermNs) {
        mConsole.message("the program is still running 5 s after SIGTERM; killing it");
        mProgram.signal(SIGKILL);
        mOutcome.killed();
        mTermNs.reset();
        return;
    }
    if (!hasBlock()) {
        mConsole.message(fmt::format("no block arrived within {} s; ending the program",
                                     inSeconds(mOptions.mPatienceNs)));
    }
    stop(hasBlock() ? StopReason::TimeIsOver : StopReason::NoBlock);
}

void Supervisor::stop(StopReason reason)
{
    mOutcome.stopped(reason);
    mProgram.signal(SIGTERM);
    mTermNs = monotonicNs();
}

std::optional<std::int64_t> Supervisor::nextEndingNs() const
{
    if (mTermNs) {
        return *mTermNs + kGraceNs;
    }
    if (!mOptions.mRunNs || mOutcome.isStopped()) {
        return std::nullopt;
    }
    return hasBlock() ? firstBlockNs() + *mOptions.mRunNs : mStartNs + mOptions.mPatienceNs;
}

bool Supervisor::hasBlock() const
{
    return mDriver.statistics().blocks() > 0;
}

std::int64_t Supervisor::firstBlockNs() const
{
    return mDriver.statistics().firstArrival().mMonotonicNs;
}

std::int64_t Supervisor::nextDeadlineNs() const
{
    std::int64_t deadlineNs =
        std::min(mNextSecondNs, mServer.nextAnswerNs().value_or(mNextSecondNs));
    if (mProgram.hasEnded()) {
        return deadlineNs;
    }
    deadlineNs = std::min(deadlineNs, nextEndingNs().value_or(deadlineNs));
    const std::optional<std::int64_t> commandNs = mCommands.nextDueNs();
    return hasBlock() && commandNs ? std::min(deadlineNs, firstBlockNs() + *commandNs) : deadlineNs;
}

void Supervisor::finish()
{
    mOutcome.ended(mProgram.waitStatus());
    if (mProgram.startFailure()) {
        mOutcome.failedToStart(*mProgram.startFailure());
    }
    mDriver.closeOutputs();
    mConsole.clearStatus();
    if (mProgram.startFailure()) {
        mConsole.message(mProgram.startFailure()->mText);
    } else {
        reportEnd();
    }
    recordEnd();
}

void Supervisor::reportEnd()
{
    if (const std::optional<int> signal = mOutcome.crashSignal()) {
        mConsole.message(
            fmt::format("the program ended by signal {} ({})", *signal, strsignal(*signal)));
    }
    const std::size_t unsent = mCommands.remaining();
    if (!hasBlock() && !mOutcome.isStopped() && (mOptions.mRunNs || unsent > 0)) {
        mConsole.message(
            "the program ended before its first block; --for and --send count from it");
    } else if (unsent > 0) {
        mConsole.message(
            fmt::format("the program ended before {} of the --send commands were due", unsent));
    }
    for (const std::string& fault : mDriver.faults().unmet()) {
        mConsole.message("the program ended before any write triggered the fault " + fault);
    }
}

void Supervisor::recordEnd()
{
    mCommands.recordUnsent();
    if (!mOutcome.startFailure()) {
        mDriver.events().addProgramEnd(realtimeNs(), mOutcome.programEnd());
    }
    mDriver.events().addRunEnd(realtimeNs(), mOutcome.reason(), mDriver.faults().unmet());
}

} // namespace sandbox
