#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <tuple>

#include "Configuration.h"
#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "Records.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

namespace {
using namespace std::string_literals;

constexpr int kMaxLineBytes = 64 * 1024;
constexpr char kTaken[] = "Configuration source/Configuration.cpp Configuration::readUserInput";

/** Three configurations, of which 0 is played; the only entry of each is named as the number. */
class ControlCommandTest : public testing::Test
{
protected:
    ControlCommandTest() { restart(); }

    void restart()
    {
        mConfiguration = std::make_unique<Configuration>();
        for (const char* line : {"0,1,0", "1,1,1", "2,1,2"}) {
            EXPECT_TRUE(mConfiguration->parseLine(QString::fromLatin1(line)));
        }
    }

    bool take(const std::string& bytes)
    {
        TestDevice::send(bytes);
        return mConfiguration->readUserInput();
    }

    /** The numbers that the next two passes play. */
    std::string nextPlayed()
    {
        std::string played;
        for (int pass = 0; pass < 2; ++pass) {
            mConfiguration->selectNextConfiguration();
            mConfiguration->resetIterator();
            played += mConfiguration->nextItem()->fileName().toStdString();
        }
        return played;
    }

    /** Waits for up to 1 s, which only a command can shorten; the ns that passed. */
    qint64 waitInVain()
    {
        const qint64 before = toNanoseconds(mSystem.mMonotonic);
        EXPECT_FALSE(mConfiguration->waitForUserInput(1000));
        return toNanoseconds(mSystem.mMonotonic) - before;
    }

    TestDevice mDevice;
    LogCapture mLog;
    VirtualSystem mSystem;
    std::unique_ptr<Configuration> mConfiguration;
};

TEST_F(ControlCommandTest, MakesAPrivateFifoOrUsesAnExistingOne)
{
    struct stat status
    {
    };
    EXPECT_EQ(stat(kControlFifoPath, &status), 0);
    EXPECT_EQ(status.st_mode, S_IFIFO | 0700U);
    TestDevice::remove(kControlFifoPath);
    ASSERT_EQ(mkfifo(kControlFifoPath, 0666), 0);
    ASSERT_EQ(chmod(kControlFifoPath, 0666), 0);
    const int descriptors = openDescriptors();
    restart();
    EXPECT_EQ(openDescriptors(), descriptors) << "those of the one before are closed";
    EXPECT_EQ(mLog.take(), Lines{});
    EXPECT_TRUE(take("1\n"));
}

TEST_F(ControlCommandTest, UnusableFifoTakesNoCommand)
{
    const auto expectNoCommand = [this](const Lines& messages) {
        restart();
        EXPECT_EQ(waitInVain(), kSecond);
        EXPECT_EQ(
            mLog.takeFrom("Configuration source/Configuration.cpp Configuration::Configuration"),
            messages);
    };
    const Lines kMissing{"ERROR File:/etc/vx/simulator_control doesnot exist"};
    ASSERT_EQ(mount("tests", "/etc/vx", "tmpfs", MS_RDONLY, nullptr), 0);
    expectNoCommand(kMissing);
    EXPECT_EQ(umount("/etc/vx"), 0);
    TestDevice::makeLink(kControlFifoPath, "/etc/vx/nowhere");
    expectNoCommand(kMissing);
    EXPECT_FALSE(std::filesystem::exists("/etc/vx/nowhere"));
    TestDevice::makeDirectory(kControlFifoPath);
    expectNoCommand({}); // exists, but does not open
}

TEST_F(ControlCommandTest, LinesTakenByAnotherReaderAreNotExecuted)
{
    mSystem.mOnRead = [] { // between the poll and the read
        const int fifo = open(kControlFifoPath, O_RDONLY | O_NONBLOCK);
        std::array<char, 10> bytes{};
        EXPECT_EQ(read(fifo, bytes.data(), bytes.size()), 2);
        close(fifo);
    };
    EXPECT_FALSE(take("1\n"));
    EXPECT_TRUE(take("s2\n"));
    EXPECT_EQ(mLog.take(), (Lines{"INFO Execute Config 2 once"}));
}

TEST_F(ControlCommandTest, TakesAndRejectsCommands)
{
    const std::string kNoNumber = "ERROR Could not convert ";
    const std::tuple<std::string, Lines, const char*> kCases[] = {
        {"2\n", {"INFO Execute Config 2 continuous"}, "22"},
        {"s2\n", {"INFO Execute Config 2 once"}, "20"},
        {"s 1 \n", {"INFO Execute Config 1 once"}, "10"},
        {"1\0junk\n"s, {"INFO Execute Config 1 continuous"}, "11"},
        {"3\n", {"ERROR Wrong Config: 3"}, "00"},
        {"4294967295\n", {"ERROR Wrong Config: -1"}, "00"},
        {"-1\n", {kNoNumber + "-1\nto unsigned"}, "00"},
        {"\xFF\n", {kNoNumber + "\uFFFD\nto unsigned"}, "00"},
        {"s\n", {kNoNumber + "\nto unsigned"}, "00"},
        {"s\0\n"s, {"ERROR Config Cmd to small!"}, "00"},
        {"\0\n"s, {}, "00"},
        {"", {}, "00"}};
    for (const auto& [command, messages, played] : kCases) {
        SCOPED_TRACE(testing::PrintToString(command));
        restart();
        const bool valid = !messages.empty() && messages[0][0] == 'I';
        EXPECT_EQ(take(command), valid);
        EXPECT_EQ(mLog.takeFrom(kTaken), messages);
        EXPECT_EQ(mConfiguration->commandsTaken(), valid ? 1U : 0U);
        EXPECT_EQ(nextPlayed(), played);
        EXPECT_FALSE(mConfiguration->readUserInput()) << "a command is taken once";
    }
    EXPECT_EQ(mSystem.mWaits.size() + mSystem.mSleeps.size(), 0U);
}

TEST_F(ControlCommandTest, TakesOneLinePerCallAndKeepsAnUnfinishedOne)
{
    EXPECT_TRUE(take("s1\n2\nx\ns"));
    EXPECT_EQ(nextPlayed(), "10");
    EXPECT_TRUE(take(""));
    EXPECT_EQ(nextPlayed(), "22");
    for (const char* part : {"", "", " ", "0"}) {
        EXPECT_FALSE(take(part));
    }
    EXPECT_TRUE(take("\n1\n"));
    EXPECT_EQ(nextPlayed(), "02");
    EXPECT_TRUE(take(""));
    EXPECT_EQ(nextPlayed(), "11");
}

TEST_F(ControlCommandTest, EndOfFileEndsACommand)
{
    for (const char* bytes : {"s1\n2", "s"}) {
        TestDevice::remove(kControlFifoPath);
        writeFile(kControlFifoPath, bytes);
        restart();
        while (mConfiguration->readUserInput()) {
        }
    }
    mSystem.mWaits.clear();
    EXPECT_EQ(waitInVain(), kSecond) << "always ready to be read";
    EXPECT_EQ(mSystem.mWaits.size(), 20U) << "looked at every 50 ms";
    EXPECT_EQ(mLog.take(), (Lines{"INFO Execute Config 1 once", "INFO Execute Config 2 continuous",
                                  "ERROR Config Cmd to small!"}));
}

TEST_F(ControlCommandTest, OverlongLineIsDroppedOnce)
{
    EXPECT_FALSE(take(std::string(kMaxLineBytes - 1, ' ')));
    EXPECT_TRUE(take("1\n")) << "the longest line";
    mLog.take();
    mSystem.mOnPoll = [] { TestDevice::send(std::string(4096, '1')); }; // who never ends
    for (int i = 0; i < 2; ++i) {
        mSystem.mPolls = 0;
        EXPECT_FALSE(mConfiguration->readUserInput());
        EXPECT_LE(mSystem.mPolls, 40) << "what one call reads is bounded";
    }
    mSystem.mOnPoll = nullptr;
    EXPECT_TRUE(take("1\ns2\n"));
    EXPECT_FALSE(take(std::string(kMaxLineBytes, '1')));
    EXPECT_FALSE(take("1\n")) << "one byte too long";
    EXPECT_TRUE(take("s2\n"));
    const Lines kDroppedAndTaken{"ERROR Command line without its end after 65536 bytes, dropped",
                                 "INFO Execute Config 2 once"};
    EXPECT_EQ(mLog.takeFrom(kTaken), joined(kDroppedAndTaken, kDroppedAndTaken));
}

TEST_F(ControlCommandTest, WaitEndsWithACommandOrAfterItsTime)
{
    EXPECT_EQ(waitInVain(), kSecond);
    const std::function<void()> kCauses[] = {
        [] { TestDevice::send(repeated("nonsense\n", 3000)); }, // who floods
        [this] { mSystem.mNextSelectError = EBADF; }, [this] { mSystem.mNextSelectError = EINTR; }};
    for (const auto& cause : kCauses) {
        TestDevice::remove(kControlFifoPath);
        restart();
        cause();
        EXPECT_EQ(waitInVain(), kSecond) << &cause - kCauses;
        EXPECT_LE(std::exchange(mSystem.mWaits, {}).size(), 120U);
    }
    mSystem.mReadsUntilFault = 1; // the first one only looks
    mSystem.mReadFault = EIO;
    TestDevice::send("1\n");
    const auto waitForCommand = [this] {
        const qint64 before = toNanoseconds(mSystem.mMonotonic);
        EXPECT_TRUE(mConfiguration->waitForUserInput(1000));
        return toNanoseconds(mSystem.mMonotonic) - before;
    };
    EXPECT_EQ(waitForCommand(), kSecond / 20) << "what the failed read left";
    const std::vector<const char*> kArrivals[] = {{"s1\n"}, {"x\ns1\n"}, {"x\n", "s", "1\n"}};
    for (const auto& arrivals : kArrivals) {
        auto next = arrivals.begin();
        mSystem.mOnWait = [&] {
            mSystem.advance(kSecond / 4);
            TestDevice::send(*next++);
        };
        EXPECT_EQ(waitForCommand(), static_cast<qint64>(arrivals.size()) * kSecond / 4);
    }
}
} // namespace
