#include "base/StandardOutput.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "base/CaseError.h"

namespace base {

namespace {
/** Also works if SIGPIPE is ignored, by the parent process or by a library. */
void endIfReaderHasGone(int error)
{
    if (error == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
}
} // namespace

void writeToStandardOutput(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<size_t>(written));
        } else if (errno != EINTR) {
            const int error = errno;
            endIfReaderHasGone(error);
            throw CaseError(std::string("standard output: ") + std::strerror(error));
        }
    }
}

} // namespace base
