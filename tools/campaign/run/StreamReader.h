#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "FileDescriptor.h"

namespace run {

/** Data from the pipes of the sandbox since the last call. */
struct ArrivedBytes
{
    std::string mEvents;
    std::string mRecords;
    bool mHasEnded = false; ///< all writers have closed both pipes; this is the last data
};

/**
 * Reads events and records of a sandbox in a separate thread. Otherwise a full pipe would stall the
 * sandbox, and the stream, while the night waits for its disk.
 *
 * The events of a block are never delivered after its records. Owns the pipes and the thread, which
 * ends with this object. All functions are for one other thread.
 */
class StreamReader
{
public:
    /** Limit of buffered data: more than a minute of the stream at 50 Hz. Then the pipes fill. */
    static constexpr size_t kMaxBytes = size_t{64} << 20U;

    StreamReader(files::FileDescriptor events, files::FileDescriptor records);
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;
    ~StreamReader();

    /** Readable when take() has data. This object keeps the ownership. */
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
