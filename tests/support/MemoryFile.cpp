#include "MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

MemoryFile::MemoryFile(const std::string& bytes) : mDescriptor(memfd_create("vx-test", MFD_CLOEXEC))
{
    const ssize_t written = ::write(mDescriptor, bytes.data(), bytes.size());
    if (written != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("cannot make a file in memory");
    }
}

MemoryFile::~MemoryFile()
{
    ::close(mDescriptor);
}

QString MemoryFile::path() const
{
    return QStringLiteral("/proc/self/fd/%1").arg(mDescriptor);
}
