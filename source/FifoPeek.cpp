#include "FifoPeek.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

namespace {
/** Copies the bytes in a FIFO without taking them; fails for everything else. */
ssize_t copyOfFifo(int descriptor, const int* pipe, char* bytes, size_t size)
{
    const ssize_t copied = ::tee(descriptor, pipe[1], size, SPLICE_F_NONBLOCK);
    if (copied <= 0) {
        return copied;
    }
    ssize_t count = 0;
    do {
        count = ::read(pipe[0], bytes, static_cast<size_t>(copied));
    } while (count < 0 && errno == EINTR);
    return count;
}

/** Copies bytes of a file from its read position on; fails for everything else. */
ssize_t copyOfFile(int descriptor, char* bytes, size_t size)
{
    const off_t position = ::lseek(descriptor, 0, SEEK_CUR);
    return position < 0 ? -1 : ::pread(descriptor, bytes, size, position);
}
} // namespace

FifoPeek::FifoPeek()
{
    if (::pipe2(mPipe, O_CLOEXEC) != 0) {
        mPipe[0] = -1;
        mPipe[1] = -1;
    }
}

FifoPeek::~FifoPeek()
{
    for (const int end : mPipe) {
        if (end >= 0) {
            ::close(end);
        }
    }
}

size_t FifoPeek::bytesOfFirstLine(int descriptor) const
{
    std::array<char, kMaxBytes> bytes{};
    ssize_t count = copyOfFifo(descriptor, mPipe, bytes.data(), bytes.size());
    if (count < 0) {
        count = copyOfFile(descriptor, bytes.data(), bytes.size());
    }
    if (count <= 0) {
        return 1;
    }
    const std::string_view waiting(bytes.data(), static_cast<size_t>(count));
    const size_t lineEnd = waiting.find('\n');
    return lineEnd == std::string_view::npos ? waiting.size() : lineEnd + 1;
}
