#include "run/PlayRecordings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <string_view>

namespace run {

namespace {
constexpr mode_t kRecordingMode = 0666;
constexpr mode_t kExpectedFolderMode = 0777;
} // namespace

void PlayRecordings::add(const std::string& name, const SampleRecord* records, size_t count)
{
    auto recording = mOpen.find(name);
    if (recording == mOpen.end()) {
        recording = mOpen.emplace(name, open(name)).first;
    }
    files::FileDescriptor& file = recording->second;
    if (!file.isOpen()) {
        return;
    }
    const std::string bytes(reinterpret_cast<const char*>(records), count * sizeof *records);
    if (!hasRoomFor(bytes.size()) || !files::writeAll(file.get(), bytes)) {
        file.close(); // a recording with a gap would be measured wrongly
        remove(name);
        return;
    }
    mBytes += bytes.size();
}

void PlayRecordings::end(const std::string& name, bool isWanted)
{
    const auto recording = mOpen.find(name);
    if (recording == mOpen.end()) {
        return;
    }
    if (!isWanted && recording->second.isOpen()) {
        struct stat facts = {};
        const bool isKnown = fstat(recording->second.get(), &facts) == 0;
        mBytes -= isKnown ? static_cast<quint64>(facts.st_size) : 0;
        remove(name);
    }
    mOpen.erase(recording);
}

files::FileDescriptor PlayRecordings::open(const std::string& name) const
{
    const std::string path = pathOf(name);
    // On failure, opening the file reports the error.
    mkdir(path.substr(0, path.rfind('/')).c_str(), kExpectedFolderMode);
    return files::FileDescriptor(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kRecordingMode));
}

bool PlayRecordings::hasRoomFor(quint64 bytes) const
{
    struct statvfs disk = {};
    return mBytes + bytes <= kMaxBytes && statvfs(mFolder.c_str(), &disk) == 0 &&
           quint64{disk.f_bavail} * disk.f_frsize >= bytes + kMinFreeBytes;
}

void PlayRecordings::remove(const std::string& name) const
{
    unlink(pathOf(name).c_str()); // a file that cannot be removed is later found to be too short
}

} // namespace run
