#include "VxDevice.h"

#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "TrackLog.h"

namespace {
constexpr int kMillisecondsPerSecond = 1000;
constexpr int kMicrosecondsPerMillisecond = 1000;
constexpr int kWaitWithoutLimit = -1;

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}
} // namespace

VxDevice::VxDevice()
{
    createPipe();
}

VxDevice::VxDevice(const QString& name) : QFile(name)
{
    createPipe();
}

VxDevice::~VxDevice()
{
    interruptWait();
    if (mPipeCreated) {
        ::close(mPipe[mReadEnd]);
    }
}

void VxDevice::createPipe()
{
    initTrack("VxDevice");
    mPipeCreated = ::pipe(mPipe) == 0;
}

bool VxDevice::hasInterruptPipe() const
{
    return mPipe[mReadEnd] != 0;
}

bool VxDevice::failWait(int error, const QString& text)
{
    setErrorString(text);
    errno = error;
    return false;
}

bool VxDevice::waitForReadyRead(int msecs)
{
    timeval timeout{};
    timeout.tv_sec = msecs / kMillisecondsPerSecond;
    timeout.tv_usec = (msecs % kMillisecondsPerSecond) * kMicrosecondsPerMillisecond;

    const int descriptor = handle();
    if (descriptor >= FD_SETSIZE || mPipe[mReadEnd] >= FD_SETSIZE) {
        return failWait(EINVAL, systemText(EINVAL));
    }
    fd_set readSet;
    FD_ZERO(&readSet);
    if (descriptor >= 0) {
        FD_SET(descriptor, &readSet);
    }
    if (hasInterruptPipe()) {
        FD_SET(mPipe[mReadEnd], &readSet);
    }

    const int ready = ::select(FD_SETSIZE, &readSet, nullptr, nullptr,
                               msecs == kWaitWithoutLimit ? nullptr : &timeout);
    if (ready < 0) {
        const int error = errno;
        return failWait(error, systemText(error));
    }
    if (ready == 0) {
        return failWait(ETIMEDOUT, QStringLiteral("Timeout"));
    }
    // The pipe is never read, so an interruption also ends every later wait.
    if (hasInterruptPipe() && FD_ISSET(mPipe[mReadEnd], &readSet)) {
        return failWait(EINTR, QStringLiteral("Signal Interrupt"));
    }
    return true;
}

int VxDevice::readRaw(void* buffer, size_t length)
{
    const ssize_t count = ::read(handle(), buffer, length);
    if (count < 0) {
        const int error = errno;
        setErrorString(systemText(error));
        errno = error;
    }
    return static_cast<int>(count);
}

int VxDevice::readWithTimeout(void* buffer, size_t length, unsigned int msecs)
{
    if (!waitForReadyRead(static_cast<int>(msecs))) {
        return -1;
    }
    return readRaw(buffer, length);
}

VxDevice::ReadError VxDevice::readContinuous(size_t size, void* buffer, unsigned int timeout)
{
    size_t remaining = size;
    char* position = static_cast<char*>(buffer);
    ReadError code = NoError;
    while (remaining > 0 && code == NoError) {
        const int count = readWithTimeout(position, remaining, timeout);
        if (count > 0) {
            remaining -= static_cast<size_t>(count);
            position += count;
        } else {
            code = classifyFailure(count);
        }
    }
    const int error = errno;
    reportChange(code, LOG4CXX_LOCATION);
    mLastReadError = code;
    errno = error;
    return code;
}

VxDevice::ReadError VxDevice::classifyFailure(int count)
{
    if (count == 0) {
        setErrorString(QStringLiteral("End of file"));
        errno = 0;
        return UnspecificError;
    }
    switch (errno) {
        case EFBIG:
            return RingbufferOverflowError;
        case ETIMEDOUT:
            return TimeoutError;
        case EINTR:
            return SignalReceived;
        default:
            return UnspecificError;
    }
}

/** Logs at the location of its caller. */
void VxDevice::reportChange(ReadError code, const log4cxx::spi::LocationInfo& location)
{
    if (code == mLastReadError || code == SignalReceived) {
        return;
    }
    if (code == NoError) {
        logInfo(mLogger, location, [this] {
            return "Continue reading from " + local8Bit(fileName()) +
                   " after error: " + local8Bit(errorString());
        });
        return;
    }
    logError(mLogger, location, [this] {
        return "Error while reading from " + local8Bit(fileName()) + " : " +
               local8Bit(errorString());
    });
}

QString VxDevice::readErrorString(ReadError code) const
{
    switch (code) {
        case NoError:
            return QStringLiteral("no Error");
        case UnspecificError:
            return QStringLiteral("unspecific Error");
        case TimeoutError:
            return QStringLiteral("timeout Error");
        case RingbufferOverflowError:
            return QStringLiteral("driver Ringbuffer Overflow Error");
        case SignalReceived:
            return QStringLiteral("Linux Signal received");
    }
    return QStringLiteral("unknown Error");
}

void VxDevice::interruptWait()
{
    if (mPipeCreated && !mWriteEndClosed.test_and_set()) {
        ::close(mPipe[mWriteEnd]);
    }
}
