#include "VxDevice.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <tuple>

#include "Files.h"
#include "LogCapture.h"
#include "VirtualSystem.h"

namespace {
using testing::ElementsAre;
using testing::EndsWith;

/** A device on a FIFO. */
class VxDeviceTest : public testing::Test
{
protected:
    VxDeviceTest()
    {
        EXPECT_EQ(mkfifo(fifo().c_str(), 0600), 0);
        mDevice.setFileName(QString::fromStdString(fifo()));
    }

    std::string fifo() const { return mFiles.path("fifo"); }

    void open() { ASSERT_TRUE(mDevice.open(QIODevice::ReadWrite | QIODevice::Unbuffered)); }

    void send(const std::string& bytes) const { writeFile(fifo(), bytes); }

    static void expectWaitFails(VxDevice& device, int msecs, int error, const char* text)
    {
        errno = 0;
        EXPECT_FALSE(device.waitForReadyRead(msecs));
        EXPECT_EQ(errno, error);
        EXPECT_EQ(device.errorString().toStdString(), text);
    }

    TestFiles mFiles;
    LogCapture mLog;
    VxDevice mDevice;
};

TEST_F(VxDeviceTest, WatchesTheDescriptor)
{
    char byte = 0;
    EXPECT_EQ(mDevice.readRaw(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(mDevice.errorString(), QStringLiteral("Bad file descriptor"));
    expectWaitFails(mDevice, 0, ETIMEDOUT, "Timeout"); // not open: only the pipe is watched
    open();
    expectWaitFails(mDevice, 20, ETIMEDOUT, "Timeout");
    send("xy");
    EXPECT_TRUE(mDevice.waitForReadyRead(0));
    EXPECT_TRUE(mDevice.waitForReadyRead(-1));
    EXPECT_EQ(mDevice.readRaw(&byte, 1), 1);
    EXPECT_EQ(byte, 'x');
    expectWaitFails(mDevice, -2, EINVAL, "Invalid argument");
    mDevice.interruptWait(); // ends every later wait
    for (const int msecs : {-1, 100'000}) {
        expectWaitFails(mDevice, msecs, EINTR, "Signal Interrupt");
    }
    EXPECT_EQ(mDevice.readWithTimeout(&byte, 1, 0), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(mDevice.readRaw(&byte, 1), 1);
}

TEST_F(VxDeviceTest, WaitsAsLongAsAsked)
{
    VirtualSystem system;
    open();
    for (const int msecs : {1, 999, 1500, INT_MAX}) {
        expectWaitFails(mDevice, msecs, ETIMEDOUT, "Timeout");
    }
    EXPECT_EQ(system.mWaits, (std::vector<qint64>{1000, 999'000, 1'500'000, 1000LL * INT_MAX}));
    system.mNextSelectError = EINTR;
    expectWaitFails(mDevice, -1, EINTR, "Interrupted system call");
    system.mOnWait = [this] { mDevice.interruptWait(); };
    expectWaitFails(mDevice, -1, EINTR, "Signal Interrupt");
}

TEST_F(VxDeviceTest, ClosesItsDescriptorsOnceAndNoneOfOthers)
{
    const int before = openDescriptors();
    {
        VxDevice opened(mDevice.fileName());
        opened.open(QIODevice::ReadWrite);
        VxDevice interrupted;
        interrupted.interruptWait();
        const int other = ::open("/dev/null", O_RDONLY); // gets the number that is free again
        interrupted.interruptWait();
        EXPECT_EQ(::close(other), 0);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(VxDeviceTest, DescriptorBeyondTheSetCannotBeWaitedFor)
{
    const rlimit limit{2 * FD_SETSIZE, 2 * FD_SETSIZE};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    while (::open("/dev/null", O_RDONLY) < FD_SETSIZE - 1) { // closed by the end of the process
    }
    open();
    ASSERT_EQ(mDevice.handle(), FD_SETSIZE);
    expectWaitFails(mDevice, 0, EINVAL, "Invalid argument");
    VxDevice withHighPipe;
    expectWaitFails(withHighPipe, 0, EINVAL, "Invalid argument");
}

TEST_F(VxDeviceTest, ReadsExactlyTheBytesAskedFor)
{
    VirtualSystem system;
    open();
    send(std::string(40, 'a'));
    system.mOnWait = [this] { send(std::string(70, 'b')); };
    std::string buffer(101, '.');
    EXPECT_EQ(mDevice.readContinuous(100, buffer.data(), 50), VxDevice::NoError);
    EXPECT_EQ(buffer, std::string(40, 'a') + std::string(60, 'b') + ".");
    EXPECT_EQ(system.mReads, 2);
    EXPECT_EQ(system.mWaits, (std::vector<qint64>{50'000, 50'000}));
}

TEST_F(VxDeviceTest, ClassifiesReadErrorsAndReportsEachOnce)
{
    VirtualSystem system;
    open();
    const Words kTexts = split(
        "no Error|unspecific Error|timeout Error|driver Ringbuffer Overflow Error|Linux "
        "Signal received",
        '|');
    const std::string kDuring = "ERROR Error while reading from " + fifo() + " : ";
    const std::string kAfter = "INFO Continue reading from " + fifo() + " after error: ";
    // Bytes that are there and asked for, errno of the wait, errno of the read.
    const std::tuple<size_t, int, int, VxDevice::ReadError, Lines> kSteps[] = {
        {1, 0, 0, VxDevice::NoError, {}},
        {0, ETIMEDOUT, 0, VxDevice::NoError, {}},
        {1, ETIMEDOUT, 0, VxDevice::TimeoutError, {kDuring + "Connection timed out"}},
        {1, 0, 0, VxDevice::NoError, {kAfter + "Connection timed out"}},
        {1, 0, EFBIG, VxDevice::RingbufferOverflowError, {kDuring + "File too large"}},
        {1, 0, EIO, VxDevice::UnspecificError, {kDuring + "Input/output error"}},
        {1, EINTR, 0, VxDevice::SignalReceived, {}},
        {1, 0, EINTR, VxDevice::SignalReceived, {}},
        {1, 0, EIO, VxDevice::UnspecificError, {kDuring + "Input/output error"}},
        {1, ENOMEM, 0, VxDevice::UnspecificError, {}},
        {0, 0, 0, VxDevice::NoError, {kAfter + "Cannot allocate memory"}},
        {1, EINTR, 0, VxDevice::SignalReceived, {}},
        {1, 0, 0, VxDevice::NoError, {kAfter + "Interrupted system call"}}};
    for (const auto& [size, waitError, readError, code, messages] : kSteps) {
        send("x");
        system.mNextSelectError = waitError;
        system.mReadFault = readError;
        char byte = 0;
        EXPECT_EQ(mDevice.readContinuous(size, &byte, 10), code);
        EXPECT_EQ(mDevice.readErrorString(code).toStdString(), kTexts.at(code));
        EXPECT_EQ(
            mLog.takeFrom("VxDevice externals/utils/source/VxDevice.cpp VxDevice::readContinuous"),
            messages);
        system.mReadFault = 0;
        system.mNextSelectError = 0;
    }
}

TEST_F(VxDeviceTest, EndOfFileIsUnspecificWhateverErrnoHeld)
{
    const QString name = mFiles.make("short", "0123456789");
    for (const int stale : {0, EFBIG}) {
        VxDevice device(name);
        ASSERT_TRUE(device.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        std::string buffer(20, '.');
        errno = stale;
        EXPECT_EQ(device.readContinuous(20, buffer.data(), 10), VxDevice::UnspecificError);
        EXPECT_EQ(buffer, "0123456789..........");
        EXPECT_THAT(mLog.take(), ElementsAre(EndsWith("short : End of file")));
    }
}
} // namespace
