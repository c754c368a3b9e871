#include "ProgramProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>

namespace sandbox {

namespace {

std::vector<pid_t> children()
{
    std::ifstream list("/proc/thread-self/children");
    return {std::istream_iterator<pid_t>(list), std::istream_iterator<pid_t>()};
}

/**
 * The report is one byte with the exit status, followed by the text. An empty report means success.
 */
[[noreturn]] void reportAndExit(const files::FileDescriptor& report, const StartFailure& failure)
{
    const std::string bytes = static_cast<char>(failure.mExitStatus) + failure.mText;
    const ssize_t written = write(report.get(), bytes.data(), bytes.size());
    _exit(written > 0 ? failure.mExitStatus : kExitSandboxFailed);
}

StartFailure execute(const std::vector<std::string>& command)
{
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    const int error = errno;
    return {error == ENOENT ? kExitNotFound : kExitCannotExecute,
            "cannot run " + command.front() + ": " + std::strerror(error)};
}

StartFailure becomeProgram(pid_t sandbox, const std::vector<std::string>& command,
                           const std::function<void()>& prepare,
                           const std::function<void()>& restoreSignals)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != sandbox) {
        return {kExitSandboxFailed, "the sandbox is gone"};
    }
    try {
        prepare();
        restoreSignals();
    } catch (const std::exception& failure) {
        return {kExitSandboxFailed, failure.what()};
    }
    return execute(command);
}

} // namespace

void ProgramProcess::start(const std::vector<std::string>& command,
                           const std::function<void()>& prepare,
                           const std::function<void()>& restoreSignals)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        files::throwErrno("cannot make a pipe");
    }
    mReport = files::FileDescriptor(ends[0]);
    const files::FileDescriptor childEnd(ends[1]);
    const pid_t sandbox = getpid();
    mOlderChildren = children();
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    mPid = fork();
    if (mPid < 0) {
        files::throwErrno("cannot make a process");
    }
    if (mPid == 0) {
        reportAndExit(childEnd, becomeProgram(sandbox, command, prepare, restoreSignals));
    }
}

void ProgramProcess::readStartReport()
{
    std::array<char, 4096> bytes{};
    const ssize_t count = read(mReport.get(), bytes.data(), bytes.size());
    if (count > 0) {
        mReportText.append(bytes.data(), static_cast<std::size_t>(count));
        return;
    }
    mReport.close();
    if (!mReportText.empty()) {
        mStartFailure = {static_cast<unsigned char>(mReportText.front()), mReportText.substr(1)};
    }
}

void ProgramProcess::signal(int number) const
{
    if (!mHasEnded) {
        kill(mPid, number);
    }
}

void ProgramProcess::reap()
{
    int status = 0;
    while (const pid_t child = std::max(waitpid(-1, &status, WNOHANG), 0)) {
        if (child == mPid) {
            mHasEnded = true;
            mWaitStatus = status;
        }
    }
}

bool ProgramProcess::killLeftBehind() const
{
    const std::vector<pid_t> all = children();
    return std::count_if(all.begin(), all.end(), [this](pid_t child) {
               const bool isOurs =
                   std::count(mOlderChildren.begin(), mOlderChildren.end(), child) == 0;
               return isOurs && kill(child, SIGKILL) == 0;
           }) > 0;
}

} // namespace sandbox
