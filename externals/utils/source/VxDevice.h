#pragma once

#include <QFile>
#include <QString>
#include <atomic>
#include <cstddef>

#include "TrackObject.h"

/**
 * A file for device nodes and FIFOs: adds to QFile a wait for readable data with a time-out that
 * another thread can cut short, and a loop that reads exactly a given number of bytes, classifies
 * its failures, logs a lasting failure once and logs the recovery.
 *
 * The file is opened and closed as any QFile. The object owns a pipe that carries the
 * interruption; it must not be read. All operations belong to the reading thread, except
 * interruptWait(). No operation throws; results, errno and errorString() tell what happened.
 */
class VxDevice : public QFile, public TrackObject
{
public:
    enum ReadError : int
    {
        NoError = 0,                 ///< all requested bytes were read
        UnspecificError = 1,         ///< any other failure; also the end of the file
        TimeoutError = 2,            ///< errno ETIMEDOUT
        RingbufferOverflowError = 3, ///< errno EFBIG: the driver's ring buffer overflowed
        SignalReceived = 4           ///< errno EINTR: interruptWait() or a signal
    };

    VxDevice();
    explicit VxDevice(const QString& name);
    VxDevice(const VxDevice&) = delete;
    VxDevice& operator=(const VxDevice&) = delete;
    ~VxDevice() override;

    /**
     * Waits until the file's descriptor is readable. Looks at the descriptor only: bytes that
     * QIODevice holds in its own buffer do not count.
     *
     * @param msecs the longest wait in ms; 0 polls, -1 waits without limit
     * @return true when a read will not block. false otherwise, with errno and errorString():
     *         ETIMEDOUT "Timeout"; EINTR "Signal Interrupt" after interruptWait(), also when data
     *         is there; EINVAL for a descriptor beyond what select() can watch or msecs below -1;
     *         else what select() failed with.
     */
    bool waitForReadyRead(int msecs) override;

    /** One read() on the descriptor: bytes read, 0 at the end of file, -1 with errno. */
    int readRaw(void* buffer, size_t length);

    /** Waits up to msecs ms, then reads once as readRaw(); -1 with errno when the wait failed. */
    int readWithTimeout(void* buffer, size_t length, unsigned int msecs);

    /**
     * Reads exactly size bytes, each wait limited to timeout ms. Bytes read before a failure
     * stay in the buffer; their number is not returned. errno and errorString() tell of the
     * failure; at the end of the file errno is 0.
     */
    ReadError readContinuous(size_t size, void* buffer, unsigned int timeout);

    QString readErrorString(ReadError code) const;

    /** Ends the present wait and every later one. May be called from any thread, and again. */
    void interruptWait();

private:
    void createPipe();
    bool failWait(int error, const QString& text);
    bool hasInterruptPipe() const;
    ReadError classifyFailure(int count);
    void reportChange(ReadError code, const log4cxx::spi::LocationInfo& location);

    int mReadEnd = 0;
    int mWriteEnd = 1;
    int mPipe[2] = {0, 0};
    ReadError mLastReadError = NoError;
    bool mPipeCreated = false;
    std::atomic_flag mWriteEndClosed = ATOMIC_FLAG_INIT;
};
