#include "run/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "base/CaseError.h"

namespace run {

namespace {
/**
 * Above all target numbers of the child's descriptors, so that none is replaced before it is
 * copied.
 */
constexpr int kFirstFreeDescriptor = 64;

/** Owns the actions and attributes of posix_spawn. */
class SpawnSetup
{
public:
    SpawnSetup()
    {
        posix_spawn_file_actions_init(&mActions);
        posix_spawnattr_init(&mAttributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&mAttributes, &none);
        posix_spawnattr_setsigdefault(&mAttributes, &all);
        posix_spawnattr_setpgroup(&mAttributes, 0);
        posix_spawnattr_setflags(
            &mAttributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&mActions);
        posix_spawnattr_destroy(&mAttributes);
    }

    posix_spawn_file_actions_t mActions{};
    posix_spawnattr_t mAttributes{};
};

std::vector<char*> argumentsOf(std::vector<std::string>* words)
{
    std::vector<char*> arguments;
    for (std::string& word : *words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    return arguments;
}
} // namespace

ChildProcess::ChildProcess(const ChildSetup& setup)
{
    SpawnSetup spawn;
    posix_spawn_file_actions_addchdir_np(&spawn.mActions, setup.mDirectory.c_str());
    std::vector<files::FileDescriptor> copies;
    for (const int descriptor : setup.mDescriptors) {
        copies.emplace_back(fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstFreeDescriptor));
        const auto number = static_cast<int>(copies.size()) - 1;
        posix_spawn_file_actions_adddup2(&spawn.mActions, copies.back().get(), number);
    }
    std::vector<std::string> words = setup.mCommand;
    const int error = posix_spawnp(&mPid, words.front().c_str(), &spawn.mActions,
                                   &spawn.mAttributes, argumentsOf(&words).data(), environ);
    if (error != 0) {
        throw base::CaseError("cannot run " + words.front() + ": " + std::strerror(error));
    }
}

ChildProcess::~ChildProcess()
{
    if (mPid > 0) {
        kill();
        wait();
    }
}

void ChildProcess::kill() const
{
    if (mPid > 0) {
        ::kill(mPid, SIGKILL);
    }
}

int ChildProcess::wait()
{
    int status = 0;
    while (waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    return status;
}

Pipe::Pipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw base::CaseError(std::string("cannot make a pipe: ") + std::strerror(errno));
    }
    mReadEnd = files::FileDescriptor(ends[0]);
    mWriteEnd = files::FileDescriptor(ends[1]);
}

} // namespace run
