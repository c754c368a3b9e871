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
 * Shows the driver's files in a file system of its own, on a staging directory in the private
 * /dev, and hands every write on them to the driver. Direct I/O: one write of the program is one
 * request.
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

    /** Becomes readable when a request waits; -1 when the file system is gone. */
    int descriptor() const;

    /** Answers one request, if one waits; a write that is to stall is answered later. */
    void serveOne();

    /** When the next answer that is held back is due, on the monotonic clock. */
    std::optional<std::int64_t> nextAnswerNs() const;

    /** Gives the answers that were held back and are due; a signal to the writer makes one due. */
    void giveAnswersDue(std::int64_t monotonicNs);

    /** Hands a write to the driver. For the file system's own operations. */
    void write(fuse_req* request, DriverFile file, off_t offset, const char* data,
               std::size_t size);

    SimulatedDriver& driver() { return mDriver; }

    /**
     * Puts the files where they belong and takes the staging directory away. Requires: runs in
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
