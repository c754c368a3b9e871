#include "PrivateMounts.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "FileDescriptor.h"
#include "FixedPaths.h"

namespace sandbox {

namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr mode_t kMountPointMode = 0644;

/** Entries that the private /dev takes over from the host if they exist. */
constexpr const char* kUsualNodes[] = {
    "null", "zero",   "full", "random", "urandom", "tty",   "console", "ptmx",   "pts",
    "shm",  "mqueue", "log",  "fuse",   "fd",      "stdin", "stdout",  "stderr",
};

std::string parentOf(const std::string& path)
{
    return std::filesystem::path(path).parent_path();
}

bool isDirectory(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

void writeProcFile(const char* path, const std::string& text)
{
    const files::FileDescriptor file(open(path, O_WRONLY | O_CLOEXEC));
    if (!file.isOpen() ||
        write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        files::throwErrno(std::string("user namespaces are restricted here: cannot write ") + path);
    }
}

/** Maps the caller onto itself: its files belong to the same user inside and outside. */
void enterUserNamespace()
{
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        files::throwErrno(errno == ENOSPC
                              ? "no permission to mount, and user.max_user_namespaces allows "
                                "no user namespace to mount in"
                              : "no permission to mount, and the kernel or the container "
                                "forbids user namespaces to mount in");
    }
    writeProcFile("/proc/self/setgroups", "deny");
    writeProcFile("/proc/self/uid_map", user + " " + user + " 1");
    writeProcFile("/proc/self/gid_map", group + " " + group + " 1");
}

void mountTmpfs(const std::string& path, mode_t mode)
{
    const std::string options = fmt::format("mode={:04o}", mode & static_cast<mode_t>(ALLPERMS));
    if (mount("vx-sandbox", path.c_str(), "tmpfs", 0, options.c_str()) != 0) {
        files::throwErrno("the kernel or the container refuses to mount a tmpfs on " + path);
    }
}

/** MS_REC, because in a user namespace an inherited mount can only be bound with its submounts. */
void bind(const std::string& source, const std::string& target)
{
    if (mount(source.c_str(), target.c_str(), "none", MS_BIND | MS_REC, nullptr) != 0) {
        files::throwErrno("the kernel or the container refuses a bind mount on " + target);
    }
}

void makeDirectory(const std::string& path)
{
    if (mkdir(path.c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
        files::throwErrno("cannot make the directory " + path);
    }
}

void makeMountPointFile(const std::string& path)
{
    const files::FileDescriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kMountPointMode));
    if (!file.isOpen()) {
        files::throwErrno("cannot make the file " + path);
    }
}

/** A descriptor of the directory that stays valid when a mount covers it. */
files::FileDescriptor openDirectory(const std::string& path)
{
    files::FileDescriptor directory(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen()) {
        files::throwErrno("cannot open " + path);
    }
    return directory;
}

mode_t modeOf(const files::FileDescriptor& file)
{
    struct stat status
    {
    };
    return fstat(file.get(), &status) == 0 ? status.st_mode : kDirectoryMode;
}

std::vector<std::string> entryNames(const std::string& path)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

/** Makes the entry `name` of the old directory appear in the new one; skips a missing one. */
void carryOver(const files::FileDescriptor& oldDirectory, const std::string& name,
               const std::string& newDirectory)
{
    struct stat status
    {
    };
    if (fstatat(oldDirectory.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return;
    }
    const std::string source = "/proc/self/fd/" + std::to_string(oldDirectory.get()) + "/" + name;
    const std::string target = newDirectory + "/" + name;
    if (S_ISLNK(status.st_mode)) {
        std::filesystem::copy_symlink(source, target);
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        makeDirectory(target);
    } else {
        makeMountPointFile(target);
    }
    bind(source, target);
}

} // namespace

void PrivateMounts::enter()
{
    if (unshare(CLONE_NEWNS) != 0) {
        if (errno != EPERM) {
            files::throwErrno("cannot make a mount namespace");
        }
        enterUserNamespace();
    }
    if (mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0) {
        files::throwErrno("the kernel or the container refuses to make the mounts private");
    }
    mEntered = true;
}

void PrivateMounts::coverDirectory(const std::string& path)
{
    checkEntered();
    const files::FileDescriptor oldDirectory = openDirectory(path);
    const std::vector<std::string> names = entryNames(path);
    mountTmpfs(path, modeOf(oldDirectory));
    for (const std::string& name : names) {
        carryOver(oldDirectory, name, path);
    }
}

void PrivateMounts::makePrivateDirectory(const std::string& path)
{
    checkEntered();
    if (isDirectory(path)) {
        mountTmpfs(path, kDirectoryMode);
        return;
    }
    const std::string parent = parentOf(path);
    if (parent == "/") {
        throw std::runtime_error("there is no directory " + path + " to mount on");
    }
    if (isDirectory(parent)) {
        coverDirectory(parent);
    } else {
        makePrivateDirectory(parent);
    }
    makeDirectory(path);
}

void PrivateMounts::makePrivateDev()
{
    checkEntered();
    const files::FileDescriptor oldDev = openDirectory("/dev");
    mountTmpfs("/dev", kDirectoryMode);
    for (const char* name : kUsualNodes) {
        carryOver(oldDev, name, "/dev");
    }
}

void PrivateMounts::makeEtcVx()
{
    makePrivateDirectory(parentOf(kControlFifoPath));
}

void PrivateMounts::makeDriverDirectory()
{
    makePrivateDirectory(parentOf(kH2pPath));
}

void PrivateMounts::bindFile(const std::string& source, const std::string& target)
{
    checkEntered();
    makeMountPointFile(target);
    bind(source, target);
}

/** Outside the namespace this would change the mounts of the host. */
void PrivateMounts::checkEntered() const
{
    if (!mEntered) {
        throw std::logic_error("enter() was not called before the first private mount");
    }
}

} // namespace sandbox
