#include "run/NightFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/CaseError.h"

namespace run {

namespace {
constexpr mode_t kFileMode = 0666;
constexpr mode_t kFolderMode = 0777;
constexpr int kMaxSameNames = 100;
} // namespace

std::string NightFolder::keep(const std::string& name, const std::vector<SampleRecord>& records)
{
    const std::string bytes(reinterpret_cast<const char*>(records.data()),
                            records.size() * sizeof(SampleRecord));
    if (mKeptBytes + bytes.size() > kMaxKeptBytes) {
        return "";
    }
    mkdir(file("kept").c_str(), kFolderMode); // on failure, opening the file reports the error
    for (int number = 1; number <= kMaxSameNames; ++number) {
        const std::string suffix = number == 1 ? "" : '-' + std::to_string(number);
        const std::string path = "kept/" + name + suffix + ".bin";
        const files::FileDescriptor kept(
            open(file(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
        if (!kept.isOpen() && errno == EEXIST) {
            continue;
        }
        if (!kept.isOpen() || !files::writeAll(kept.get(), bytes) || fdatasync(kept.get()) != 0) {
            return "";
        }
        mKeptBytes += bytes.size();
        return path;
    }
    return "";
}

files::FileDescriptor NightFolder::append(const std::string& name) const
{
    files::FileDescriptor opened(
        open(file(name).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kFileMode));
    if (!opened.isOpen()) {
        throw base::CaseError(file(name) + ": " + std::strerror(errno));
    }
    return opened;
}

} // namespace run
