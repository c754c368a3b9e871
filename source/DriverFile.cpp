#include "DriverFile.h"

#include <unistd.h>

#include <cerrno>

namespace {
/** Max attempts in a row to repeat an interrupted write. */
constexpr int kMaxInterruptions = 100;

/** ::write(), repeated while it is interrupted. */
ssize_t writeOnce(int descriptor, const char* data, size_t size)
{
    ssize_t count = -1;
    int attempts = 0;
    do {
        count = ::write(descriptor, data, size);
    } while (count < 0 && errno == EINTR && ++attempts <= kMaxInterruptions);
    return count;
}
} // namespace

qint64 DriverFile::writeData(const char* data, qint64 size)
{
    qint64 written = 0;
    while (written < size) {
        const ssize_t count =
            writeOnce(handle(), data + written, static_cast<size_t>(size - written));
        if (count <= 0) {
            break;
        }
        written += count;
    }
    return written == 0 && size > 0 ? -1 : written;
}
