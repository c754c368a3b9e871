#include "FileDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace files {

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : mDescriptor(other.release()) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    if (this != &other) {
        close();
        mDescriptor = other.release();
    }
    return *this;
}

FileDescriptor::~FileDescriptor()
{
    close();
}

void FileDescriptor::close()
{
    if (isOpen()) {
        ::close(release());
    }
}

int FileDescriptor::release()
{
    return std::exchange(mDescriptor, -1);
}

bool writeAll(int descriptor, const std::string& bytes)
{
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (written >= 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

void throwErrno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace files
