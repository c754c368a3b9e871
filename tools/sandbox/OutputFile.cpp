#include "OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Console.h"

namespace sandbox {

namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr std::size_t kBufferBytes = 64 * 1024;

} // namespace

OutputFile::OutputFile(const std::string& path, Console& console) : mPath(path), mConsole(console)
{
    if (path.empty()) {
        return;
    }
    mFile = files::FileDescriptor(
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, kNewFileMode));
    if (!mFile.isOpen()) {
        files::throwErrno("cannot write " + path);
    }
}

OutputFile::~OutputFile()
{
    close();
}

void OutputFile::write(const void* data, std::size_t size)
{
    if (!mFile.isOpen()) {
        return;
    }
    mBuffer.append(static_cast<const char*>(data), size);
    if (mBuffer.size() >= kBufferBytes) {
        flush();
    }
}

void OutputFile::flush()
{
    if (!mBuffer.empty() && !files::writeAll(mFile.get(), mBuffer)) {
        endWithError();
    }
    mBuffer.clear();
}

void OutputFile::close()
{
    flush();
    if (mFile.isOpen() && ::close(mFile.release()) != 0) {
        endWithError();
    }
}

void OutputFile::endWithError()
{
    mConsole.message(fmt::format("cannot write {}: {}; nothing more is written to it", mPath,
                                 std::strerror(errno)));
    mHasFailed = true;
    mFile.close();
}

} // namespace sandbox
