#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "FileDescriptor.h"

namespace run {

/** What came through the pipes of the sandbox since it was last asked. */
struct ArrivedBytes
{
    std::string mEvents;
    std::string mRecords;
    bool mHasEnded = false; ///< all writers have closed both pipes, and this is the rest
};

/**
 * Reads events and records of a sandbox in a thread of its own: a full pipe would make the sandbox
 * wait, and the stream stand still, as long as the night waits for its disk.
 *
 * The events of a block are never taken after its records. Owns the pipes and the thread, which
 * ends with this object. All operations are for one other thread.
 */
class StreamReader
{
public:
    /** More than a minute of the stream at 50 Hz. Beyond it the pipes fill. */
    static constexpr size_t kMaxBytes = size_t{64} << 20U;

    StreamReader(files::FileDescriptor events, files::FileDescriptor records);
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;
    ~StreamReader();

    /** Readable when there is something to take. It stays owned by this object. */
    int descriptor() const { return mArrival.get(); }

    /** Never waits. */
    ArrivedBytes take();

private:
    void run();
    std::string drain(files::FileDescriptor* pipe);
    void waitForBytes() const;
    void waitForRoom();
    void publish(const std::string& events, const std::string& records);

    files::FileDescriptor mEvents;  ///< of the thread
    files::FileDescriptor mRecords; ///< of the thread
    files::FileDescriptor mArrival; ///< an eventfd
    files::FileDescriptor mStop;    ///< an eventfd
    std::vector<char> mBuffer;      ///< of the thread
    std::mutex mMutex;
    std::condition_variable mRoom;
    ArrivedBytes mArrived;   ///< under the mutex
    bool mIsStopped = false; ///< under the mutex
    std::thread mThread;
};

} // namespace run
