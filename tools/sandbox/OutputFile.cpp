#include "OutputFile.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "Console.h"
#include "FileDescriptor.h"

namespace sandbox {

OutputFile::OutputFile(const std::string& path, Console& console) : mPath(path), mConsole(console)
{
    if (path.empty()) {
        return;
    }
    mFile.reset(std::fopen(path.c_str(), "we"));
    if (!isOpen()) {
        throwErrno("cannot write " + path);
    }
}

OutputFile::~OutputFile()
{
    flush();
}

void OutputFile::write(const void* data, std::size_t size)
{
    if (isOpen() && std::fwrite(data, 1, size, mFile.get()) != size) {
        endWithError();
    }
}

void OutputFile::flush()
{
    if (isOpen() && std::fflush(mFile.get()) != 0) {
        endWithError();
    }
}

void OutputFile::endWithError()
{
    mConsole.message(fmt::format("cannot write {}: {}; it ends here", mPath, std::strerror(errno)));
    mHasFailed = true;
    mFile.reset();
}

} // namespace sandbox
