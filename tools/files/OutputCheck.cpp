#include "OutputCheck.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>

namespace files {

namespace {

namespace fs = std::filesystem;

/** The number of links that the kernel follows for one name. */
constexpr int kMaxLinks = 40;

/** Two names have equal identities only if they name the same file. */
struct Identity
{
    dev_t mDevice = 0;
    ino_t mInode = 0; ///< of the file; if it does not exist, of its directory ...
    fs::path mName;   ///< ... with its name there; the whole path if that does not exist either

    bool operator==(const Identity& other) const
    {
        return std::tie(mDevice, mInode, mName) ==
               std::tie(other.mDevice, other.mInode, other.mName);
    }
};

std::optional<struct stat> statusOf(const fs::path& path)
{
    struct stat status
    {
    };
    return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/** The target of a link even if it does not exist yet: writing would create it. */
fs::path behindLinks(fs::path path)
{
    std::error_code error;
    for (int links = 0; links < kMaxLinks && fs::is_symlink(path, error); ++links) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

Identity identityOfMissing(const fs::path& path)
{
    const fs::path target = behindLinks(path);
    const fs::path directory = target.has_parent_path() ? target.parent_path() : ".";
    if (const std::optional<struct stat> status = statusOf(directory)) {
        return {status->st_dev, status->st_ino, target.filename()};
    }
    std::error_code error;
    return {0, 0, fs::weakly_canonical(fs::absolute(target, error), error)};
}

/** No value for a path that cannot be overwritten. */
std::optional<Identity> identityOf(const fs::path& path)
{
    const std::optional<struct stat> status = statusOf(path);
    if (!status) {
        return identityOfMissing(path);
    }
    if (S_ISCHR(status->st_mode)) {
        return std::nullopt;
    }
    return Identity{status->st_dev, status->st_ino, {}};
}

} // namespace

bool areSameFile(const std::string& left, const std::string& right)
{
    const std::optional<Identity> identity = identityOf(left);
    return identity && identity == identityOf(right);
}

void OutputCheck::addInput(std::string role, std::string path)
{
    if (!path.empty()) {
        mInputs.push_back({std::move(role), std::move(path)});
    }
}

void OutputCheck::addOutput(std::string role, std::string path)
{
    if (!path.empty()) {
        mOutputs.push_back({std::move(role), std::move(path)});
    }
}

std::string OutputCheck::conflict() const
{
    for (auto output = mOutputs.begin(); output != mOutputs.end(); ++output) {
        const auto isOutput = [output](const NamedFile& other) {
            return areSameFile(output->mPath, other.mPath);
        };
        const std::string begin = output->mPath + ": " + output->mRole;
        const auto input = std::find_if(mInputs.begin(), mInputs.end(), isOutput);
        if (input != mInputs.end()) {
            return begin + " would overwrite " + input->mRole + " " + input->mPath +
                   "; name another file";
        }
        const auto earlier = std::find_if(mOutputs.begin(), output, isOutput);
        if (earlier != output) {
            return begin + " is the same file as " + earlier->mRole + " " + earlier->mPath +
                   "; name another file";
        }
    }
    return {};
}

} // namespace files
