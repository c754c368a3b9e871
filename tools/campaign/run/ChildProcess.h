#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "FileDescriptor.h"

namespace run {

/** What a child process gets: it inherits these descriptors and no others. */
struct ChildSetup
{
    std::vector<std::string> mCommand; ///< looked up in PATH
    std::string mDirectory;
    std::vector<int> mDescriptors; ///< which become 0, 1, 2 and so on there
};

/**
 * A child process in a process group of its own, so that an interrupt from the terminal does not
 * reach it. Its end is waited for at last when the object goes away; then it is killed first.
 */
class ChildProcess
{
public:
    /** @throws CaseError when it cannot be started */
    explicit ChildProcess(const ChildSetup& setup);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    void kill() const;

    /** Waits for its end; as waitpid gives it. */
    int wait();

private:
    pid_t mPid = -1;
};

/** Both ends of a new pipe, closed when another program is executed. Throws CaseError. */
struct Pipe
{
    Pipe();

    files::FileDescriptor mReadEnd;
    files::FileDescriptor mWriteEnd;
};

} // namespace run
