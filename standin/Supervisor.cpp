#include "Supervisor.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Console.h"
#include "FuseServer.h"
#include "PrivateMounts.h"
#include "SimulatedDriver.h"
#include "Summary.h"

namespace {

/** How long the program may take to end after SIGTERM before it is killed. */
constexpr std::int64_t kGraceNs = 5 * kNanosecondsPerSecond;

timespec toTimespec(std::int64_t nanoseconds)
{
    return {static_cast<time_t>(nanoseconds / kNanosecondsPerSecond),
            static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
}

/** Enters the working directory again by its name: it may have been covered. */
void reenterWorkingDirectory()
{
    std::array<char, PATH_MAX> path{};
    if (getcwd(path.data(), path.size()) == nullptr || chdir(path.data()) != 0) {
        throwErrno("cannot enter the working directory again");
    }
}

} // namespace

Supervisor::Supervisor(const Options& options, SimulatedDriver& driver, FuseServer& server,
                       PrivateMounts& mounts, Console& console)
    : mOptions(options),
      mDriver(driver),
      mServer(server),
      mMounts(mounts),
      mConsole(console),
      mCommands(options.mCommands, driver.events(), console)
{
}

int Supervisor::run()
{
    takeOverSignals();
    const auto prepare = [this] {
        mServer.bindFiles(mMounts);
        reenterWorkingDirectory();
    };
    mProgram.start(mOptions.mProgram, prepare, [this] { restoreSignals(); });
    mNextSecondNs = monotonicNs() + kNanosecondsPerSecond;
    while (!mHasEnded || mProgram.startReport() >= 0) {
        waitForWork();
        if (!mHasEnded) {
            runTimers();
        }
    }
    mDriver.flush();
    reportEnd();
    return exitStatus();
}

void Supervisor::takeOverSignals()
{
    // An inherited SIG_IGN for SIGCHLD would make the kernel throw the exit status away.
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
    mSignals = FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!mSignals.isOpen()) {
        throwErrno("cannot wait for signals");
    }
}

void Supervisor::restoreSignals() const
{
    sigaction(SIGPIPE, &mOldPipeAction, nullptr);
    sigprocmask(SIG_SETMASK, &mOldMask, nullptr);
}

void Supervisor::waitForWork()
{
    std::array<pollfd, 3> files = {{{mServer.descriptor(), POLLIN, 0},
                                    {mSignals.get(), POLLIN, 0},
                                    {mProgram.startReport(), POLLIN, 0}}};
    const timespec wait = toTimespec(std::max<std::int64_t>(nextDeadlineNs() - monotonicNs(), 0));
    if (ppoll(files.data(), files.size(), &wait, nullptr) < 0) {
        if (errno == EINTR) {
            return;
        }
        throwErrno("cannot wait for the program");
    }
    if (files[0].revents != 0) {
        mServer.serveOne();
    }
    mServer.giveAnswersDue(monotonicNs());
    if (files[1].revents != 0) {
        handleSignal();
    }
    if (files[2].revents != 0) {
        mProgram.readStartReport();
    }
}

void Supervisor::handleSignal()
{
    signalfd_siginfo info{};
    if (read(mSignals.get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
        return;
    }
    if (info.ssi_signo == SIGCHLD) {
        mHasEnded = mProgram.reap();
        return;
    }
    forwardSignal(static_cast<int>(info.ssi_signo), info.ssi_code == SI_KERNEL);
}

/** The terminal has sent its signal to the program too; a second one would mean something else. */
void Supervisor::forwardSignal(int number, bool isFromTerminal)
{
    if (!isFromTerminal) {
        mProgram.signal(number);
    }
}

void Supervisor::runTimers()
{
    const std::int64_t nowNs = monotonicNs();
    if (mDriver.statistics().blocks() > 0) {
        const std::int64_t elapsedNs = nowNs - mDriver.statistics().firstArrival().mMonotonicNs;
        mCommands.sendDue(elapsedNs);
        endWhenDue(nowNs, elapsedNs);
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
    // After a pause (a suspended process) the seconds that were missed are not made up for.
    mNextSecondNs = std::max(mNextSecondNs + kNanosecondsPerSecond, nowNs);
}

void Supervisor::endWhenDue(std::int64_t nowNs, std::int64_t elapsedNs)
{
    if (!mKillNs && mOptions.mRunNs && elapsedNs >= *mOptions.mRunNs) {
        mProgram.signal(SIGTERM);
        mKillNs = nowNs + kGraceNs;
    }
    if (mKillNs && !mIsKilled && nowNs >= *mKillNs) {
        mConsole.message("the program is still there 5 s after SIGTERM; killing it");
        mProgram.signal(SIGKILL);
        mIsKilled = true;
    }
}

std::int64_t Supervisor::nextDeadlineNs() const
{
    std::int64_t deadlineNs =
        std::min(mNextSecondNs, mServer.nextAnswerNs().value_or(mNextSecondNs));
    if (mDriver.statistics().blocks() == 0) {
        return deadlineNs;
    }
    const std::int64_t beganNs = mDriver.statistics().firstArrival().mMonotonicNs;
    if (const std::optional<std::int64_t> dueNs = mCommands.nextDueNs()) {
        deadlineNs = std::min(deadlineNs, beganNs + *dueNs);
    }
    if (!mKillNs && mOptions.mRunNs) {
        deadlineNs = std::min(deadlineNs, beganNs + *mOptions.mRunNs);
    }
    if (mKillNs && !mIsKilled) {
        deadlineNs = std::min(deadlineNs, *mKillNs);
    }
    return deadlineNs;
}

void Supervisor::reportEnd()
{
    mConsole.clearStatus();
    if (mProgram.startFailure()) {
        mConsole.message(mProgram.startFailure()->mText);
        return;
    }
    const int status = mProgram.waitStatus();
    if (WIFSIGNALED(status) && !isEndedByUs()) {
        mConsole.message("the program ended by signal " + std::to_string(WTERMSIG(status)) + " (" +
                         strsignal(WTERMSIG(status)) + ")");
    }
    if (mDriver.statistics().blocks() == 0 && (mOptions.mRunNs || mCommands.remaining() > 0)) {
        mConsole.message(
            "the program ended before its first block; --for and --send count from it");
    } else if (mCommands.remaining() > 0) {
        mConsole.message("the program ended before " + std::to_string(mCommands.remaining()) +
                         " of the --send commands were due");
    }
    for (const std::string& fault : mDriver.faults().unmet()) {
        mConsole.message("the program ended before a write met the fault " + fault);
    }
    std::fputs(summaryText(mDriver, mOptions.wantsPmeDevice()).c_str(), stdout);
}

/** True when --for ended the program; one that crashes on its way out ended by itself. */
bool Supervisor::isEndedByUs() const
{
    const int status = mProgram.waitStatus();
    const bool isOurSignal = !WIFSIGNALED(status) || WTERMSIG(status) == SIGTERM ||
                             (mIsKilled && WTERMSIG(status) == SIGKILL);
    return mKillNs && isOurSignal;
}

int Supervisor::exitStatus() const
{
    if (mProgram.startFailure()) {
        return mProgram.startFailure()->mExitStatus;
    }
    if (mDriver.hasFailedOutput()) {
        return kExitSandboxFailed;
    }
    if (isEndedByUs()) {
        return EXIT_SUCCESS;
    }
    const int status = mProgram.waitStatus();
    return WIFSIGNALED(status) ? kExitSignalBase + WTERMSIG(status) : WEXITSTATUS(status);
}
