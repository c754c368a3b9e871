#include "explain/RecordingReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/CaseError.h"

namespace explain {

namespace {
/** 768 KiB: larger reads are not faster. */
constexpr size_t kRecordsAtOnce = 16'384;
} // namespace

RecordingReader::RecordingReader(const std::string& path)
    : mName(path == "-" ? "standard input" : path),
      mFile(path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    struct stat facts
    {
    };
    if (mFile < 0 || ::fstat(mFile, &facts) != 0) {
        throw base::CaseError(mName + ": " +
                              (errno == ENOENT ? "no such file" : std::strerror(errno)));
    }
    if (S_ISDIR(facts.st_mode)) {
        ::close(mFile);
        throw base::CaseError(mName + ": expected a file");
    }
    mIsStream = !S_ISREG(facts.st_mode);
    mSize = static_cast<size_t>(facts.st_size);
}

RecordingReader::~RecordingReader()
{
    ::close(mFile);
}

const std::vector<SampleRecord>& RecordingReader::next()
{
    mRecords.resize(kRecordsAtOnce);
    auto* const bytes = reinterpret_cast<char*>(mRecords.data());
    size_t count = mRest.size();
    std::copy(mRest.begin(), mRest.end(), bytes);
    size_t more = 1;
    while (count < sizeof(SampleRecord) && more > 0) {
        more = read(bytes + count, kRecordsAtOnce * sizeof(SampleRecord) - count);
        count += more;
    }
    const size_t records = count / sizeof(SampleRecord);
    mRest.assign(bytes + records * sizeof(SampleRecord), bytes + count);
    mRecords.resize(records);
    mTaken += records * sizeof(SampleRecord);
    if (!mIsStream && mSize > 0) {
        mProgress.show(static_cast<double>(mTaken) / static_cast<double>(mSize));
    }
    return mRecords;
}

size_t RecordingReader::read(char* bytes, size_t count)
{
    ssize_t taken = 0;
    do {
        taken = ::read(mFile, bytes, count);
    } while (taken < 0 && errno == EINTR);
    if (taken < 0) {
        throw base::CaseError(mName + ": " + std::strerror(errno));
    }
    return static_cast<size_t>(taken);
}

/** The kernel grants a read lease only if no process has the file open for writing. */
bool RecordingReader::isComplete() const
{
    if (mIsStream) {
        return false;
    }
    const bool isBeingWritten = ::fcntl(mFile, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
    ::fcntl(mFile, F_SETLEASE, F_UNLCK);
    return !isBeingWritten;
}

} // namespace explain
