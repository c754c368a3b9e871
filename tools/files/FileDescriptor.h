#pragma once

#include <string>

namespace files {

/** Owns one open file descriptor and closes it exactly once. Movable. */
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : mDescriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor();

    /** The descriptor, or -1; it stays owned by this object. */
    int get() const { return mDescriptor; }
    bool isOpen() const { return mDescriptor >= 0; }
    void close();

    /** Gives the descriptor away: the caller closes it. */
    int release();

private:
    int mDescriptor = -1;
};

/** Writes all of it, in more than one call if need be; false, with errno, when that fails. */
bool writeAll(int descriptor, const std::string& bytes);

/** Throws a std::system_error of errno; its text is `what`, ": " and the system's text. */
[[noreturn]] void throwErrno(const std::string& what);

} // namespace files
