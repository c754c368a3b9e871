#include "journal/JournalWriter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/CaseError.h"

namespace journal {

namespace {
constexpr mode_t kJournalMode = 0666;
} // namespace

JournalWriter::JournalWriter(const std::string& path, size_t keepBytes, size_t foundBytes)
    : mPath(path),
      mFile(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kJournalMode)),
      mBytes(keepBytes)
{
    if (!mFile.isOpen()) {
        fail(errno);
    }
    if (::flock(mFile.get(), LOCK_EX | LOCK_NB) != 0) {
        throw base::CaseError(path + ": another vx-campaign is writing it; wait for its end");
    }
    expectSize(foundBytes);
    cutAt(keepBytes);
    flushToDisk();
    flushDirectory();
}

void JournalWriter::append(const Entry& entry)
{
    const std::string line = lineOf(entry) + '\n';
    if (!files::writeAll(mFile.get(), line)) {
        const int error = errno;
        cutAt(mBytes);
        fail(error);
    }
    flushToDisk();
    mBytes += line.size();
}

void JournalWriter::fail(int error) const
{
    throw base::CaseError(mPath + ": " + std::strerror(error));
}

/** Another process may have appended to the journal after it was read and before it was locked. */
void JournalWriter::expectSize(size_t bytes) const
{
    struct stat status = {};
    if (::fstat(mFile.get(), &status) != 0) {
        fail(errno);
    }
    if (static_cast<size_t>(status.st_size) != bytes) {
        throw base::CaseError(mPath +
                              ": another vx-campaign has written it in the meantime; run it again");
    }
}

void JournalWriter::cutAt(size_t bytes) const
{
    if (::ftruncate(mFile.get(), static_cast<off_t>(bytes)) != 0) {
        fail(errno);
    }
}

void JournalWriter::flushToDisk() const
{
    if (::fdatasync(mFile.get()) != 0) {
        fail(errno);
    }
}

/** Writes the name of a new journal to the disk. */
void JournalWriter::flushDirectory() const
{
    const std::string parent = std::filesystem::path(mPath).parent_path();
    const files::FileDescriptor directory(
        ::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen() || ::fsync(directory.get()) != 0) {
        fail(errno);
    }
}

bool isBeingWritten(const std::string& path)
{
    const files::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file.isOpen() && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace journal
