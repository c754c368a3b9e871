#include "MemoryFile.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

MemoryFile::MemoryFile(const std::string& bytes) : mPath("/dev/shm/vx-test-XXXXXX")
{
    // A file without a name, as memfd_create makes it, counts as removed.
    const int descriptor = mkstemp(mPath.data());
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    ::close(descriptor);
    if (written != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("cannot make a file in memory");
    }
}

MemoryFile::~MemoryFile()
{
    ::unlink(mPath.c_str());
}

QString MemoryFile::path() const
{
    return QString::fromStdString(mPath);
}
