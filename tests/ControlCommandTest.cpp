#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "Configuration.h"
#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

namespace {
using namespace std::string_literals;

constexpr size_t kLongestLine = 64 * 1024;

/** Three configurations, of which 0 is played; its only entry is named as the number. */
class ControlCommandTest : public testing::Test
{
protected:
    std::unique_ptr<Configuration> makeConfiguration() const
    {
        auto configuration = std::make_unique<Configuration>();
        for (const char* line : {"0,1,0", "1,1,1", "2,1,2"}) {
            EXPECT_TRUE(configuration->parseLine(QString::fromLatin1(line)));
        }
        return configuration;
    }

    /** The numbers that the next passes play, until they repeat at the end. */
    static std::string nextPlayed(Configuration& configuration, int passes = 2)
    {
        std::string played;
        for (; passes > 0; --passes) {
            configuration.selectNextConfiguration();
            configuration.resetIterator();
            played += configuration.nextItem()->fileName().toStdString();
        }
        return played;
    }

    mode_t fifoMode() const
    {
        struct stat status
        {
        };
        EXPECT_EQ(stat(kControlFifoPath, &status), 0);
        return status.st_mode;
    }

    TestDevice mDevice;
    LogCapture mLog;
    VirtualSystem mSystem;
};

TEST_F(ControlCommandTest, MakesTheFifoForItsOwner)
{
    const mode_t usual = umask(0);
    makeConfiguration();
    EXPECT_EQ(fifoMode(), S_IFIFO | 0700U);
    mDevice.remove(kControlFifoPath);
    umask(0277);
    makeConfiguration();
    umask(usual);
    EXPECT_EQ(fifoMode(), S_IFIFO | 0500U);
}

TEST_F(ControlCommandTest, UsesAFifoThatExists)
{
    ASSERT_EQ(mkfifo(kControlFifoPath, 0622), 0);
    const mode_t before = fifoMode();
    const auto configuration = makeConfiguration();
    EXPECT_EQ(fifoMode(), before);
    mDevice.send("1\n");
    EXPECT_TRUE(configuration->readUserInput());
}

TEST_F(ControlCommandTest, FifoThatCannotBeMadeIsReported)
{
    ASSERT_EQ(mount("tests", "/etc/vx", "tmpfs", MS_RDONLY, nullptr), 0);
    const auto configuration = makeConfiguration();
    EXPECT_EQ(umount("/etc/vx"), 0);
    EXPECT_EQ(mLog.mEvents.at(0).mLogger, "Configuration");
    EXPECT_EQ(mLog.mEvents.at(0).mMethod, "Configuration::Configuration");
    EXPECT_EQ(mLog.takeLines(), Lines{"ERROR File:/etc/vx/simulator_control doesnot exist"});
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_FALSE(configuration->waitForUserInput(1000));
    EXPECT_EQ(mSystem.mWaits, std::vector<qint64>{1'000'000});
}

TEST_F(ControlCommandTest, DirectoryInTheFifosPlaceTakesNoCommand)
{
    mDevice.makeDirectory(kControlFifoPath);
    const auto configuration = makeConfiguration();
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_FALSE(configuration->waitForUserInput(1000));
    EXPECT_EQ(mLog.takeLines(), Lines{});
}

TEST_F(ControlCommandTest, TakesAndRejectsCommands)
{
    const struct
    {
        std::string command;
        bool taken;
        Lines messages;
        const char* played;
    } kCases[] = {
        {"2\n", true, {"INFO Execute Config 2 continuous"}, "22"},
        {" +2 \r\n", true, {"INFO Execute Config 2 continuous"}, "22"},
        {"s2\n", true, {"INFO Execute Config 2 once"}, "20"},
        {"s 1 \n", true, {"INFO Execute Config 1 once"}, "10"},
        {"s0\n", true, {"INFO Execute Config 0 once"}, "00"},
        {"1\0junk\n"s, true, {"INFO Execute Config 1 continuous"}, "11"},
        {"3\n", false, {"ERROR Wrong Config: 3"}, "00"},
        {"s3\n", false, {"ERROR Wrong Config: 3"}, "00"},
        {"4294967295\n", false, {"ERROR Wrong Config: -1"}, "00"},
        {"s4294967295\n", false, {"ERROR Wrong Config: -1"}, "00"},
        {"4294967296\n", false, {"ERROR Could not convert 4294967296\nto unsigned"}, "00"},
        {"-1\n", false, {"ERROR Could not convert -1\nto unsigned"}, "00"},
        {"abc\n", false, {"ERROR Could not convert abc\nto unsigned"}, "00"},
        {"S1\n", false, {"ERROR Could not convert S1\nto unsigned"}, "00"},
        {" s1\n", false, {"ERROR Could not convert  s1\nto unsigned"}, "00"},
        {"ss1\n", false, {"ERROR Could not convert s1\nto unsigned"}, "00"},
        {"1 # one\n", false, {"ERROR Could not convert 1 # one\nto unsigned"}, "00"},
        {"\xFF\n", false, {"ERROR Could not convert \uFFFD\nto unsigned"}, "00"},
        {"\n", false, {"ERROR Could not convert \nto unsigned"}, "00"},
        {"s\n", false, {"ERROR Could not convert \nto unsigned"}, "00"},
        {"s\0\n"s, false, {"ERROR Config Cmd to small!"}, "00"},
        {"\0\n"s, false, {}, "00"},
        {"", false, {}, "00"},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(testing::PrintToString(row.command));
        const auto configuration = makeConfiguration();
        mDevice.send(row.command);
        EXPECT_EQ(configuration->readUserInput(), row.taken);
        for (const LogEvent& event : mLog.mEvents) {
            EXPECT_EQ(event.mLogger, "Configuration");
            EXPECT_EQ(event.mMethod, "Configuration::readUserInput");
        }
        EXPECT_EQ(mLog.takeLines(), row.messages);
        EXPECT_EQ(configuration->commandsTaken(), row.taken ? 1U : 0U);
        EXPECT_EQ(nextPlayed(*configuration), row.played);
        EXPECT_FALSE(configuration->readUserInput()) << "a command is taken once";
    }
    EXPECT_EQ(mSystem.mWaits.size() + mSystem.mSleeps.size(), 0U);
}

TEST_F(ControlCommandTest, CommandsChangeWhatIsPlayedNext)
{
    const struct
    {
        std::vector<const char*> commands;
        const char* played; ///< in the next three passes
    } kCases[] = {
        {{}, "000"},
        {{"s1\n"}, "100"},
        {{"s1\n", "s2\n"}, "200"},
        {{"s1\n", "2\n"}, "122"},
        {{"2\n", "s1\n"}, "122"},
        {{"2\n", "1\n"}, "111"},
        {{"s1\n", "s9\n"}, "100"},
        {{"s1\n", "9\n", "x\n", "\n"}, "100"},
        {{"2\n", "s2\n"}, "222"},
    };
    for (const auto& row : kCases) {
        const auto configuration = makeConfiguration();
        std::string all;
        for (const char* command : row.commands) {
            mDevice.send(command);
            configuration->readUserInput();
            all += command;
        }
        EXPECT_EQ(nextPlayed(*configuration, 3), row.played) << all;
    }
}

TEST_F(ControlCommandTest, EachCallTakesOneCommandOfSeveral)
{
    const auto configuration = makeConfiguration();
    mDevice.send("s1\n2\nx\ns2\n1");
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_EQ(nextPlayed(*configuration), "10");
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_EQ(nextPlayed(*configuration), "22");
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_EQ(nextPlayed(*configuration), "22");
}

TEST_F(ControlCommandTest, KeepsAnUnfinishedLineUntilItsEnd)
{
    const auto configuration = makeConfiguration();
    for (const char* part : {"s", "", " ", "2"}) {
        mDevice.send(part);
        EXPECT_FALSE(configuration->readUserInput());
    }
    EXPECT_EQ(mLog.takeLines(), Lines{});
    mDevice.send("\n1\n");
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"INFO Execute Config 2 once", "INFO Execute Config 1 continuous"}));
}

TEST_F(ControlCommandTest, EndOfFileEndsACommand)
{
    writeFile(kControlFifoPath, "s1\n2");
    const auto configuration = makeConfiguration();
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_EQ(nextPlayed(*configuration), "12");

    writeFile(kControlFifoPath, "s");
    EXPECT_FALSE(makeConfiguration()->readUserInput());
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"INFO Execute Config 1 once", "INFO Execute Config 2 continuous",
                     "ERROR Config Cmd to small!"}));
}

TEST_F(ControlCommandTest, LineOfTheGreatestLengthIsHandled)
{
    const auto configuration = makeConfiguration();
    mDevice.send(std::string(kLongestLine - 1, ' '));
    EXPECT_FALSE(configuration->readUserInput());
    mDevice.send("1\n");
    EXPECT_TRUE(configuration->readUserInput());
}

TEST_F(ControlCommandTest, LineBeyondTheGreatestLengthIsDroppedOnce)
{
    const auto configuration = makeConfiguration();
    for (int i = 0; i < 3; ++i) {
        mDevice.send(std::string(kLongestLine, '1'));
        EXPECT_FALSE(configuration->readUserInput());
        EXPECT_LE(mSystem.mPolls, kLongestLine + 2) << "one call's share is bounded";
        mSystem.mPolls = 0;
    }
    mDevice.send("1\ns2\n");
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_EQ(mLog.takeLines(), (Lines{"ERROR Command line without its end after 65536 bytes, "
                                       "dropped",
                                       "INFO Execute Config 2 once"}));
}

TEST_F(ControlCommandTest, ReadThatFailsTakesNothing)
{
    const auto configuration = makeConfiguration();
    mDevice.send("s1\n");
    mSystem.mReadFault = EIO;
    EXPECT_FALSE(configuration->readUserInput());
    EXPECT_TRUE(configuration->readUserInput());
    EXPECT_EQ(nextPlayed(*configuration), "10");
}

TEST_F(ControlCommandTest, WaitIsSpentOrEndsWithACommand)
{
    const auto configuration = makeConfiguration();
    EXPECT_FALSE(configuration->waitForUserInput(1000));
    EXPECT_EQ(mSystem.mWaits, std::vector<qint64>{1'000'000});

    const qint64 before = toNanoseconds(mSystem.mMonotonic);
    mSystem.mOnWait = [this] { mDevice.send("s1\n"); };
    EXPECT_TRUE(configuration->waitForUserInput(1000));
    EXPECT_EQ(toNanoseconds(mSystem.mMonotonic), before) << "at once";
}

TEST_F(ControlCommandTest, WaitWithoutACommandDoesNotSpin)
{
    const auto configuration = makeConfiguration();
    const std::vector<std::function<void()>> kCauses{
        [this] { mDevice.send("nonsense\n"); },
        [this] { mDevice.send("unfinished"); },
        [this] { mSystem.mNextSelectError = EBADF; },
        [this] { mSystem.mNextSelectError = EINTR; },
        [this] {
            mDevice.send("1\n");
            mSystem.mReadFault = EIO;
        },
    };
    for (size_t i = 0; i < kCauses.size(); ++i) {
        const qint64 before = toNanoseconds(mSystem.mMonotonic);
        kCauses[i]();
        EXPECT_FALSE(configuration->waitForUserInput(1000)) << i;
        EXPECT_GE(toNanoseconds(mSystem.mMonotonic) - before, 100'000'000) << i;
    }
    mDevice.remove(kControlFifoPath);
    writeFile(kControlFifoPath, "");
    const auto onRegularFile = makeConfiguration();
    const qint64 before = toNanoseconds(mSystem.mMonotonic);
    EXPECT_FALSE(onRegularFile->waitForUserInput(1000));
    EXPECT_GE(toNanoseconds(mSystem.mMonotonic) - before, 100'000'000);
}
} // namespace
