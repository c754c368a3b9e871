#include "run/StreamReader.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace run {

namespace {
/** Max capacity of a pipe. */
constexpr size_t kReadBytes = size_t{1} << 20U;

files::FileDescriptor makeEventFile()
{
    files::FileDescriptor file(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!file.isOpen()) {
        files::throwErrno("eventfd");
    }
    return file;
}

void setReadable(const files::FileDescriptor& eventFile)
{
    eventfd_write(eventFile.get(), 1);
}
} // namespace

StreamReader::StreamReader(files::FileDescriptor events, files::FileDescriptor records)
    : mEvents(std::move(events)),
      mRecords(std::move(records)),
      mArrival(makeEventFile()),
      mStop(makeEventFile()),
      mBuffer(kReadBytes)
{
    for (const int pipe : {mEvents.get(), mRecords.get()}) {
        fcntl(pipe, F_SETFL, O_NONBLOCK);
    }
    // Signals are handled by the thread of the night.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    mThread = std::thread([this] { run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

StreamReader::~StreamReader()
{
    {
        const std::lock_guard lock(mMutex);
        mIsStopped = true;
    }
    setReadable(mStop);
    mRoom.notify_one();
    mThread.join();
}

ArrivedBytes StreamReader::take()
{
    eventfd_t count = 0;
    eventfd_read(mArrival.get(), &count);
    const std::lock_guard lock(mMutex);
    ArrivedBytes arrived = std::exchange(mArrived, {});
    mRoom.notify_one();
    return arrived;
}

void StreamReader::run()
{
    while (mEvents.isOpen() || mRecords.isOpen()) {
        waitForBytes();
        // The sandbox writes the event of a block before its records.
        const std::string records = drain(&mRecords);
        publish(drain(&mEvents), records);
        waitForRoom();
        const std::lock_guard lock(mMutex);
        if (mIsStopped) {
            return;
        }
    }
}

/** Reads the available bytes; closes the pipe when all its writers have closed it. */
std::string StreamReader::drain(files::FileDescriptor* pipe)
{
    std::string bytes;
    while (pipe->isOpen() && bytes.size() < kMaxBytes) {
        const ssize_t count = read(pipe->get(), mBuffer.data(), mBuffer.size());
        if (count > 0) {
            bytes.append(mBuffer.data(), static_cast<size_t>(count));
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            pipe->close();
        } else if (errno == EAGAIN) {
            break;
        }
    }
    return bytes;
}

void StreamReader::waitForBytes() const
{
    // A closed descriptor is -1, which poll() ignores.
    std::array<pollfd, 3> files = {pollfd{mStop.get(), POLLIN, 0}, pollfd{mEvents.get(), POLLIN, 0},
                                   pollfd{mRecords.get(), POLLIN, 0}};
    poll(files.data(), files.size(), -1);
}

void StreamReader::publish(const std::string& events, const std::string& records)
{
    {
        const std::lock_guard lock(mMutex);
        mArrived.mEvents += events;
        mArrived.mRecords += records;
        mArrived.mHasEnded = !mEvents.isOpen() && !mRecords.isOpen();
    }
    setReadable(mArrival);
}

void StreamReader::waitForRoom()
{
    std::unique_lock lock(mMutex);
    mRoom.wait(lock, [this] {
        return mIsStopped || mArrived.mEvents.size() + mArrived.mRecords.size() < kMaxBytes;
    });
}

} // namespace run
