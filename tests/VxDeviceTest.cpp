#include "VxDevice.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <fstream>
#include <thread>

#include "Files.h"
#include "LogCapture.h"
#include "VirtualSystem.h"

namespace {
class VxDeviceTest : public testing::Test
{
protected:
    VxDeviceTest() { EXPECT_EQ(mkfifo(mFiles.path("fifo").c_str(), 0600), 0); }

    std::string fifo() const { return mFiles.path("fifo"); }

    void open(VxDevice& device) const
    {
        device.setFileName(QString::fromStdString(fifo()));
        ASSERT_TRUE(device.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    }

    void send(const std::string& bytes) const
    {
        const int writer = ::open(fifo().c_str(), O_WRONLY);
        EXPECT_EQ(::write(writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        ::close(writer);
    }

    /** Checks that a wait fails with this errno and text. */
    static void expectWaitFails(VxDevice& device, int msecs, int error, const char* text)
    {
        errno = 0;
        EXPECT_FALSE(device.waitForReadyRead(msecs));
        EXPECT_EQ(errno, error);
        EXPECT_EQ(device.errorString().toStdString(), text);
    }

    TestFiles mFiles;
    LogCapture mLog;
};

TEST_F(VxDeviceTest, PollsTheDescriptor)
{
    VxDevice device;
    expectWaitFails(device, 0, ETIMEDOUT, "Timeout"); // not open: only the pipe is watched
    open(device);
    expectWaitFails(device, 0, ETIMEDOUT, "Timeout");
    send("x");
    EXPECT_TRUE(device.waitForReadyRead(0));
    EXPECT_TRUE(device.waitForReadyRead(-1));
    char byte = 0;
    EXPECT_EQ(device.readRaw(&byte, 1), 1);
    EXPECT_EQ(byte, 'x');
    expectWaitFails(device, 0, ETIMEDOUT, "Timeout");
}

TEST_F(VxDeviceTest, WaitsAsLongAsAsked)
{
    VirtualSystem system;
    VxDevice device;
    open(device);
    for (const int msecs : {1, 999, 1500, INT_MAX}) {
        expectWaitFails(device, msecs, ETIMEDOUT, "Timeout");
    }
    EXPECT_EQ(system.mWaits, (std::vector<qint64>{1000, 999'000, 1'500'000, 1000LL * INT_MAX}));
    system.mOnWait = [this] { send("x"); };
    EXPECT_TRUE(device.waitForReadyRead(-1));
}

TEST_F(VxDeviceTest, RealWaitEnds)
{
    VxDevice device;
    open(device);
    timespec start{};
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    expectWaitFails(device, 20, ETIMEDOUT, "Timeout");
    clock_gettime(CLOCK_MONOTONIC, &end);
    EXPECT_GE(toNanoseconds(end) - toNanoseconds(start), 20'000'000);
}

TEST_F(VxDeviceTest, WaitThatFailsGivesTheSystemsText)
{
    VxDevice device;
    open(device);
    expectWaitFails(device, -2, EINVAL, "Invalid argument");
    expectWaitFails(device, -1500, EINVAL, "Invalid argument");
    VirtualSystem system;
    system.mNextSelectError = EINTR;
    expectWaitFails(device, -1, EINTR, "Interrupted system call");
}

TEST_F(VxDeviceTest, InterruptionEndsEveryLaterWait)
{
    VxDevice device;
    open(device);
    send("data");
    device.interruptWait();
    for (const int msecs : {-1, 0, 100'000, 0}) {
        expectWaitFails(device, msecs, EINTR, "Signal Interrupt");
    }
    char byte = 0;
    EXPECT_EQ(device.readWithTimeout(&byte, 1, 0), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(device.readRaw(&byte, 1), 1);
}

/** True when the thread sleeps in the kernel. */
bool isBlocked(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), {});
    return text.compare(text.rfind(')') + 2, 1, "S") == 0;
}

TEST_F(VxDeviceTest, InterruptionEndsAWaitInProgress)
{
    for (const bool isOpen : {true, false}) {
        VxDevice device;
        if (isOpen) {
            open(device);
        }
        std::atomic<long> waiter{0};
        bool ready = true;
        int error = 0;
        std::thread thread([&] {
            waiter = syscall(SYS_gettid);
            ready = device.waitForReadyRead(-1);
            error = errno;
        });
        while (waiter == 0 || !isBlocked(waiter)) {
            std::this_thread::yield();
        }
        device.interruptWait();
        thread.join();
        EXPECT_FALSE(ready);
        EXPECT_EQ(error, EINTR);
        EXPECT_EQ(device.errorString(), QStringLiteral("Signal Interrupt"));
    }
}

TEST_F(VxDeviceTest, InterruptingTwiceClosesNothingOfOthers)
{
    int others[2] = {-1, -1};
    {
        VxDevice device;
        device.interruptWait();
        others[0] = ::open("/dev/null", O_RDONLY); // gets the number that has just become free
        device.interruptWait();
        others[1] = ::open("/dev/null", O_RDONLY);
    }
    for (const int other : others) {
        EXPECT_EQ(fcntl(other, F_GETFD), 0);
        EXPECT_EQ(::close(other), 0);
    }
}

TEST_F(VxDeviceTest, KeepsNoDescriptor)
{
    const int before = openDescriptors();
    for (int i = 0; i < 100; ++i) {
        VxDevice untouched;
        VxDevice opened;
        open(opened);
        VxDevice interrupted(QString::fromStdString(fifo()));
        interrupted.interruptWait();
        interrupted.interruptWait();
    }
    EXPECT_EQ(openDescriptors(), before);
}

/** Opens descriptors until the next one has at least the given number. */
class DescriptorFiller
{
public:
    explicit DescriptorFiller(int next)
    {
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        do {
            mTaken.push_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        } while (mTaken.back() >= 0 && mTaken.back() < next - 1);
        EXPECT_GE(mTaken.back(), next - 1);
    }
    DescriptorFiller(const DescriptorFiller&) = delete;
    DescriptorFiller& operator=(const DescriptorFiller&) = delete;
    ~DescriptorFiller()
    {
        for (const int descriptor : mTaken) {
            ::close(descriptor);
        }
    }

private:
    std::vector<int> mTaken;
};

TEST_F(VxDeviceTest, DescriptorBeyondTheSetCannotBeWaitedFor)
{
    VxDevice device;
    const DescriptorFiller filler(FD_SETSIZE);
    open(device);
    ASSERT_GE(device.handle(), FD_SETSIZE);
    send("x");
    expectWaitFails(device, 0, EINVAL, "Invalid argument");
    VxDevice withHighPipe;
    expectWaitFails(withHighPipe, 0, EINVAL, "Invalid argument");
    char byte = 0;
    EXPECT_EQ(device.readContinuous(1, &byte, 0), VxDevice::UnspecificError);
    EXPECT_EQ(mLog.takeLines(),
              Lines{"ERROR Error while reading from " + fifo() + " : Invalid argument"});
}

TEST_F(VxDeviceTest, WorksWithoutAnInterruptPipe)
{
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{0, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    VxDevice device;
    setrlimit(RLIMIT_NOFILE, &usual);

    open(device);
    device.interruptWait();
    expectWaitFails(device, 0, ETIMEDOUT, "Timeout");
    send("x");
    EXPECT_TRUE(device.waitForReadyRead(0));
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD) == -1, false) << "descriptor 0 is not ours to close";
}

TEST_F(VxDeviceTest, ReadFailureGivesTheSystemsText)
{
    VxDevice device;
    char byte = 0;
    EXPECT_EQ(device.readRaw(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(device.errorString(), QStringLiteral("Bad file descriptor"));
}

TEST_F(VxDeviceTest, ReadsExactlyTheBytesAskedFor)
{
    VirtualSystem system;
    VxDevice device;
    open(device);
    send(std::string(40, 'a'));
    system.mOnWait = [this] { send(std::string(70, 'b')); };
    std::string buffer(101, '.');
    EXPECT_EQ(device.readContinuous(100, buffer.data(), 50), VxDevice::NoError);
    EXPECT_EQ(buffer, std::string(40, 'a') + std::string(60, 'b') + ".");
    EXPECT_EQ(system.mReads, 2);
    EXPECT_EQ(system.mWaits, (std::vector<qint64>{50'000, 50'000}));
    EXPECT_EQ(mLog.takeLines(), Lines{});
}

TEST_F(VxDeviceTest, ClassifiesReadErrorsAndReportsEachOnce)
{
    VirtualSystem system;
    VxDevice device;
    open(device);
    const std::string during = "ERROR Error while reading from " + fifo() + " : ";
    const std::string after = "INFO Continue reading from " + fifo() + " after error: ";
    const struct
    {
        int selectError;
        int readError;
        bool data;
        VxDevice::ReadError code;
        Lines messages;
    } kSteps[] = {
        {0, 0, true, VxDevice::NoError, {}},
        {0, 0, false, VxDevice::TimeoutError, {during + "Timeout"}},
        {0, 0, false, VxDevice::TimeoutError, {}},
        {0, 0, true, VxDevice::NoError, {after + "Timeout"}},
        {0, EFBIG, true, VxDevice::RingbufferOverflowError, {during + "File too large"}},
        {0, EFBIG, true, VxDevice::RingbufferOverflowError, {}},
        {0, EIO, true, VxDevice::UnspecificError, {during + "Input/output error"}},
        {EINTR, 0, true, VxDevice::SignalReceived, {}},
        {0, EINTR, true, VxDevice::SignalReceived, {}},
        {0, EIO, true, VxDevice::UnspecificError, {during + "Input/output error"}},
        {ENOMEM, 0, true, VxDevice::UnspecificError, {}},
        {0, 0, true, VxDevice::NoError, {after + "Cannot allocate memory"}},
        {0, 0, true, VxDevice::NoError, {}},
        {EINTR, 0, true, VxDevice::SignalReceived, {}},
        {0, 0, true, VxDevice::NoError, {after + "Interrupted system call"}},
    };
    for (const auto& step : kSteps) {
        SCOPED_TRACE(&step - kSteps);
        if (step.data && !device.waitForReadyRead(0)) {
            send("x");
        }
        system.mNextSelectError = step.selectError;
        system.mReadFault = step.readError;
        char byte = 0;
        EXPECT_EQ(device.readContinuous(1, &byte, 10), step.code);
        EXPECT_EQ(mLog.takeLines(), step.messages);
    }
    EXPECT_EQ(mLog.errors(), 4);
}

TEST_F(VxDeviceTest, ReadingNothingRecovers)
{
    VxDevice device;
    open(device);
    EXPECT_EQ(device.readContinuous(0, nullptr, 0), VxDevice::NoError);
    EXPECT_EQ(mLog.takeLines(), Lines{});
    char byte = 0;
    EXPECT_EQ(device.readContinuous(1, &byte, 0), VxDevice::TimeoutError);
    EXPECT_EQ(device.readContinuous(0, nullptr, 0), VxDevice::NoError);
    EXPECT_EQ(mLog.mEvents.at(1).mLogger, "VxDevice");
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"ERROR Error while reading from " + fifo() + " : Timeout",
                     "INFO Continue reading from " + fifo() + " after error: Timeout"}));
}

TEST_F(VxDeviceTest, EndOfFileIsUnspecificWhateverErrnoHeld)
{
    for (const int stale : {0, ETIMEDOUT, EFBIG, EINTR}) {
        VxDevice device(mFiles.make("short", "0123456789"));
        ASSERT_TRUE(device.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        std::string buffer(20, '.');
        errno = stale;
        EXPECT_EQ(device.readContinuous(20, buffer.data(), 10), VxDevice::UnspecificError);
        EXPECT_EQ(buffer, "0123456789..........");
        EXPECT_EQ(mLog.takeLines(), Lines{"ERROR Error while reading from " + mFiles.path("short") +
                                          " : End of file"});
    }
}

TEST_F(VxDeviceTest, NamesReadErrors)
{
    const char* const kTexts[] = {"no Error",
                                  "unspecific Error",
                                  "timeout Error",
                                  "driver Ringbuffer Overflow Error",
                                  "Linux Signal received",
                                  "unknown Error",
                                  "unknown Error",
                                  "unknown Error"};
    const VxDevice device;
    for (int code = 0; code < 8; ++code) {
        EXPECT_EQ(device.readErrorString(static_cast<VxDevice::ReadError>(code)).toStdString(),
                  kTexts[code]);
    }
}
} // namespace
