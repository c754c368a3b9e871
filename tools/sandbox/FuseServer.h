#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DriverFiles.h"
#include "FileDescriptor.h"

struct fuse_buf;
struct fuse_req;
struct fuse_session;

namespace sandbox {

class PrivateMounts;
class SimulatedDriver;

/**
 * Serves the driver's files from a FUSE file system, mounted on a staging directory in the private
 * /dev, and passes every write to the driver. Direct I/O: one write of the program is one request.
 *
 * The process that serves must never touch the files itself: it would wait for its own answer.
 */
class FuseServer
{
public:
    /**
     * Mounts the file system. `driver` is borrowed for the object's life. Requires: a private
     * /dev. Throws a std::system_error or std::runtime_error that says what is missing.
     */
    FuseServer(SimulatedDriver& driver, std::vector<DriverFile> files);
    FuseServer(const FuseServer&) = delete;
    FuseServer& operator=(const FuseServer&) = delete;
    ~FuseServer();

    /** A descriptor, readable when a request waits; -1 when the file system is gone. */
    int descriptor() const;

    /** Answers one request, if one waits; a write that stalls is answered later. */
    void serveOne();

    /** When the next held answer is due, on the monotonic clock. */
    std::optional<std::int64_t> nextAnswerNs() const;

    /** Gives the held answers that are due; a signal to the writer makes its answer due. */
    void giveAnswersDue(std::int64_t monotonicNs);

    /** Passes a write to the driver. Only for the operations of the file system. */
    void write(fuse_req* request, DriverFile file, off_t offset, const char* data,
               std::size_t size);

    SimulatedDriver& driver() { return mDriver; }

    /**
     * Binds the files to their fixed paths and removes the staging directory. Requires: runs in
     * another process of the same namespace, while this one serves.
     */
    void bindFiles(PrivateMounts& mounts) const;

private:
    struct SessionDeleter
    {
        void operator()(fuse_session* session) const;
    };

    struct HeldAnswer
    {
        std::int64_t mDueNs;
        fuse_req* mRequest; ///< answered exactly once, which releases it
        std::size_t mBytes;
    };

    SimulatedDriver& mDriver;
    std::vector<HeldAnswer> mHeldAnswers;
    std::vector<DriverFile> mFiles;
    std::unique_ptr<fuse_session, SessionDeleter> mSession;
    std::unique_ptr<fuse_buf> mBuffer;
};

} // namespace sandbox
