#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "FileDescriptor.h"

namespace run {

/** A command and its descriptors. The child inherits no other descriptors. */
struct ChildSetup
{
    std::vector<std::string> mCommand; ///< looked up in PATH
    std::string mDirectory;
    std::vector<int> mDescriptors; ///< become 0, 1, 2 and so on in the child
};

/**
 * A child process in its own process group, so that an interrupt from the terminal does not reach
 * it. The destructor kills it and waits for its end, if wait() has not done so.
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

    /** Waits for its end. @return the status, as waitpid gives it */
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
