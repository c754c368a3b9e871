#include "OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Console.h"

namespace {

constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;
constexpr mode_t kFileMode = 0666;

/** Writes all of it; false with errno set when that fails. */
bool writeAll(int descriptor, const char* data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace

OutputFile::OutputFile(const std::string& path, Console& console) : mPath(path), mConsole(console)
{
    if (path.empty()) {
        return;
    }
    mFile = FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode));
    if (!mFile.isOpen()) {
        throwErrno("cannot write " + path);
    }
}

OutputFile::~OutputFile()
{
    flush();
}

void OutputFile::write(const void* data, std::size_t size)
{
    if (!isOpen()) {
        return;
    }
    mBuffer.append(static_cast<const char*>(data), size);
    if (mBuffer.size() >= kBufferBytes) {
        flush();
    }
}

void OutputFile::flush()
{
    if (isOpen() && !writeAll(mFile.get(), mBuffer.data(), mBuffer.size())) {
        mConsole.message("cannot write " + mPath + ": " + std::strerror(errno) + "; it ends here");
        mHasFailed = true;
        mFile.close();
    }
    mBuffer.clear();
}
