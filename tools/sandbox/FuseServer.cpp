#include "FuseServer.h"

#include <fcntl.h>
#include <fuse_lowlevel.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

#include "Clocks.h"
#include "PrivateMounts.h"
#include "SimulatedDriver.h"

namespace sandbox {

namespace {

constexpr char kStagingDirectory[] = "/dev/.vx-sandbox";
constexpr mode_t kStagingMode = 0755;

/** How long the kernel may cache that a name exists, in s: the names never change. */
constexpr double kEntrySeconds = 3600;

/** Never cached: after a write at an offset the kernel would guess a size. */
constexpr double kAttributeSeconds = 0;

FuseServer& serverOf(fuse_req_t request)
{
    return *static_cast<FuseServer*>(fuse_req_userdata(request));
}

fuse_ino_t inodeOf(DriverFile file)
{
    return FUSE_ROOT_ID + 1 + static_cast<fuse_ino_t>(file);
}

std::optional<DriverFile> fileOf(fuse_ino_t inode)
{
    if (inode <= FUSE_ROOT_ID || inode > FUSE_ROOT_ID + kDriverFileCount) {
        return std::nullopt;
    }
    return static_cast<DriverFile>(inode - FUSE_ROOT_ID - 1);
}

struct stat attributesOf(fuse_ino_t inode)
{
    struct stat status
    {
    };
    status.st_ino = inode;
    status.st_uid = geteuid();
    status.st_gid = getegid();
    status.st_nlink = 1;
    if (const std::optional<DriverFile> file = fileOf(inode)) {
        status.st_mode = S_IFREG | driverFileTraits(*file).mMode;
        status.st_size = driverFileTraits(*file).mSizeBytes;
    } else {
        status.st_mode = S_IFDIR | kStagingMode;
    }
    return status;
}

bool isVanished(fuse_req_t request, fuse_ino_t inode)
{
    const std::optional<DriverFile> file = fileOf(inode);
    return file && serverOf(request).driver().isVanished(*file);
}

/** The permissions of the owner that an open with these flags needs. */
mode_t wantedPermissions(int flags)
{
    const int access = flags & O_ACCMODE;
    return (access != O_WRONLY ? S_IRUSR : 0U) | (access != O_RDONLY ? S_IWUSR : 0U);
}

/** Splicing would cost one more copy: every write is read in memory. */
void init(void* /*server*/, fuse_conn_info* connection)
{
    connection->want &=
        ~static_cast<unsigned>(FUSE_CAP_SPLICE_READ | FUSE_CAP_SPLICE_WRITE | FUSE_CAP_SPLICE_MOVE);
}

void lookUp(fuse_req_t request, fuse_ino_t /*parent*/, const char* name)
{
    const std::optional<DriverFile> file = driverFileNamed(name);
    if (!file) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    fuse_entry_param entry{};
    entry.ino = inodeOf(*file);
    entry.attr = attributesOf(entry.ino);
    entry.attr_timeout = kAttributeSeconds;
    entry.entry_timeout = kEntrySeconds;
    fuse_reply_entry(request, &entry);
}

void getAttributes(fuse_req_t request, fuse_ino_t inode, fuse_file_info* /*file*/)
{
    if (isVanished(request, inode)) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    const struct stat status = attributesOf(inode);
    fuse_reply_attr(request, &status, kAttributeSeconds);
}

/** Truncating and similar calls succeed and change nothing, as on a device. */
void setAttributes(fuse_req_t request, fuse_ino_t inode, struct stat* /*wanted*/, int /*which*/,
                   fuse_file_info* file)
{
    getAttributes(request, inode, file);
}

void openFile(fuse_req_t request, fuse_ino_t inode, fuse_file_info* file)
{
    if (isVanished(request, inode)) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    // The kernel lets root open anything; the real attributes refuse root as well.
    if ((wantedPermissions(file->flags) & ~attributesOf(inode).st_mode) != 0) {
        fuse_reply_err(request, EACCES);
        return;
    }
    file->direct_io = 1;
    fuse_reply_open(request, file);
}

void readFile(fuse_req_t request, fuse_ino_t inode, size_t size, off_t offset,
              fuse_file_info* /*file*/)
{
    if (fileOf(inode) != DriverFile::H2p) {
        fuse_reply_err(request, EINVAL);
        return;
    }
    const char* text = SimulatedDriver::h2pText();
    const std::size_t length = std::strlen(text);
    const std::size_t begin = std::min(static_cast<std::size_t>(offset), length);
    fuse_reply_buf(request, text + begin, std::min(size, length - begin));
}

void writeFile(fuse_req_t request, fuse_ino_t inode, const char* data, size_t size, off_t offset,
               fuse_file_info* /*file*/)
{
    const std::optional<DriverFile> file = fileOf(inode);
    if (!file) {
        fuse_reply_err(request, EINVAL);
        return;
    }
    serverOf(request).write(request, *file, offset, data, size);
}

fuse_lowlevel_ops operations()
{
    fuse_lowlevel_ops result{};
    result.init = init;
    result.lookup = lookUp;
    result.getattr = getAttributes;
    result.setattr = setAttributes;
    result.open = openFile;
    result.read = readFile;
    result.write = writeFile;
    return result;
}

files::FileDescriptor openFuseDevice()
{
    files::FileDescriptor device(open("/dev/fuse", O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (device.isOpen()) {
        return device;
    }
    const bool isForbidden = errno == EACCES || errno == EPERM;
    files::throwErrno(
        isForbidden
            ? "no permission to open /dev/fuse, which the driver's files need (its usual mode is "
              "0666)"
            : "the kernel or the container has no usable /dev/fuse, which the driver's files need");
}

/**
 * The library would fall back to a set-uid helper and hide the reason, so the mount is done here.
 */
void mountFuse(const files::FileDescriptor& device)
{
    if (mkdir(kStagingDirectory, kStagingMode) != 0) {
        files::throwErrno(std::string("cannot make the directory ") + kStagingDirectory);
    }
    const std::string options = "fd=" + std::to_string(device.get()) +
                                ",rootmode=40000,user_id=" + std::to_string(geteuid()) +
                                ",group_id=" + std::to_string(getegid()) + ",default_permissions";
    if (mount("vx-sandbox", kStagingDirectory, "fuse", MS_NOSUID | MS_NODEV, options.c_str()) !=
        0) {
        files::throwErrno("the kernel or the container refuses to mount a FUSE file system here");
    }
}

} // namespace

void FuseServer::SessionDeleter::operator()(fuse_session* session) const
{
    fuse_session_destroy(session);
}

FuseServer::FuseServer(SimulatedDriver& driver, std::vector<DriverFile> files)
    : mDriver(driver), mFiles(std::move(files)), mBuffer(std::make_unique<fuse_buf>())
{
    files::FileDescriptor device = openFuseDevice();
    mountFuse(device);

    std::string name = "vx-sandbox";
    char* arguments[] = {name.data(), nullptr};
    fuse_args args = FUSE_ARGS_INIT(1, arguments);
    const fuse_lowlevel_ops ops = operations();
    mSession.reset(fuse_session_new(&args, &ops, sizeof ops, this));
    fuse_opt_free_args(&args);
    const std::string mountPoint = "/dev/fd/" + std::to_string(device.get());
    if (!mSession || fuse_session_mount(mSession.get(), mountPoint.c_str()) != 0) {
        throw std::runtime_error("the FUSE library cannot make a session");
    }
    device.release();
}

FuseServer::~FuseServer()
{
    giveAnswersDue(std::numeric_limits<std::int64_t>::max());
    std::free(mBuffer->mem);
}

int FuseServer::descriptor() const
{
    return fuse_session_exited(mSession.get()) != 0 ? -1 : fuse_session_fd(mSession.get());
}

void FuseServer::serveOne()
{
    if (fuse_session_receive_buf(mSession.get(), mBuffer.get()) > 0) {
        fuse_session_process_buf(mSession.get(), mBuffer.get());
    }
}

void FuseServer::write(fuse_req* request, DriverFile file, off_t offset, const char* data,
                       std::size_t size)
{
    const WriteAnswer answer = mDriver.write(file, offset, data, size);
    if (answer.mError != 0) {
        fuse_reply_err(request, answer.mError);
    } else if (answer.mDelayNs > 0) {
        mHeldAnswers.push_back({monotonicNs() + answer.mDelayNs, request, answer.mBytes});
    } else {
        fuse_reply_write(request, answer.mBytes);
    }
}

std::optional<std::int64_t> FuseServer::nextAnswerNs() const
{
    std::optional<std::int64_t> next;
    for (const HeldAnswer& held : mHeldAnswers) {
        next = std::min(next.value_or(held.mDueNs), held.mDueNs);
    }
    return next;
}

void FuseServer::giveAnswersDue(std::int64_t monotonicNs)
{
    const auto due =
        std::partition(mHeldAnswers.begin(), mHeldAnswers.end(), [&](const HeldAnswer& it) {
            return it.mDueNs > monotonicNs && fuse_req_interrupted(it.mRequest) == 0;
        });
    // If its writer has ended meanwhile, the kernel discards the answer.
    std::for_each(due, mHeldAnswers.end(),
                  [](const HeldAnswer& it) { fuse_reply_write(it.mRequest, it.mBytes); });
    mHeldAnswers.erase(due, mHeldAnswers.end());
}

void FuseServer::bindFiles(PrivateMounts& mounts) const
{
    for (const DriverFile file : mFiles) {
        mounts.bindFile(std::string(kStagingDirectory) + "/" + driverFileName(file),
                        driverFileTraits(file).mPath);
    }
    if (umount2(kStagingDirectory, MNT_DETACH) != 0 || rmdir(kStagingDirectory) != 0) {
        files::throwErrno(std::string("cannot remove ") + kStagingDirectory);
    }
}

} // namespace sandbox
