#include <cerrno>
#include <map>
#include <tuple>

#include "SimulatorFixture.h"

namespace {
/**
 * Has the value files a, b and c with one sample each, whose auxiliary word is the letter, and e
 * without samples.
 */
class SimulatorTest : public SimulatorFixture
{
protected:
    SimulatorTest()
    {
        for (const char letter : {'a', 'b', 'c'}) {
            writeFile(std::string(1, letter), valueLine(std::to_string(letter), "50"));
        }
        writeFile("e", "# nothing\n");
    }

    /** The letters of the samples that arrived, in order. */
    static std::string played()
    {
        std::string letters;
        for (const SampleRecord& record : TestDevice::records()) {
            letters += static_cast<char>(record.mAuxWord);
        }
        return letters;
    }

    /**
     * Plays until this number of samples has arrived; sends each command after its number of
     * samples.
     */
    void run(const std::string& config, size_t samples, std::map<size_t, std::string> commands)
    {
        mSystem.mOnPoll = [samples, commands]() mutable {
            const auto size = static_cast<size_t>(std::filesystem::file_size(kSampleBufferPath));
            const size_t count = size / sizeof(SampleRecord);
            if (count >= samples) {
                throw EndOfTest();
            }
            const auto command = commands.extract(count);
            if (!command.empty()) {
                TestDevice::send(command.mapped());
            }
        };
        runUntilEndOfTest(config);
    }
};

TEST_F(SimulatorTest, LoadsValueFilesInOrderUpToTheFirstFailureOrGap)
{
    writeFile("bad", "1;2\n");
    const std::string kOpened = "INFO Total 1 lines parsed.";
    const std::string kGap = "ERROR no configuration found.";
    const Lines kBad{"INFO Parsing bad'.",
                     "ERROR bad:1: Wrong number of parameter. Expected: 13, found 2: 1;2",
                     "ERROR Problem while handling line. abort.", kOpened};
    const Lines kMissing{"INFO Parsing none'.",
                         "FATAL openFileInternal() : Das I/O-Device 'none' existiert nicht.",
                         "ERROR could not open file: none"};
    const Lines kA{"INFO Parsing a'.", kOpened};
    const std::pair<const char*, Lines> kCases[] = {
        {"", {"INFO All data files parsed."}},
        {"1,1,b\n0,0,a\n1,1,e\n",
         {"INFO Parsing a'.", kOpened, "INFO Parsing b'.", kOpened, "INFO Parsing e'.", kOpened,
          "INFO All data files parsed."}},
        {"0,1,a\n2,1,a\n", joined(kA, {kGap})},
        // Nothing is read after a failure, and gaps are still reported.
        {"0,1,a\n0,1,bad\n0,1,a\n1,1,a\n", joined(kA, kBad)},
        {"0,1,none\n0,1,a\n1,1,none\n", kMissing},
        {"0,1,none\n2,1,a\n", joined(kMissing, {kGap})}};
    for (const auto& [config, messages] : kCases) {
        restart();
        ASSERT_TRUE(loadConfig(config));
        mLog.take();
        const bool isGood = messages.back() == "INFO All data files parsed.";
        EXPECT_EQ(mSimulator->loadDataFiles(), isGood) << config;
        EXPECT_EQ(mLog.take(), messages) << config;
    }
}

constexpr char kThree[] = "0,2,a\n0,1,b\n1,1,c\n1,2,a\n2,3,b\n";

TEST_F(SimulatorTest, FailedWriteDropsTheRestOfThePassAndCostsNoWait)
{
    mSystem.mFaultyFile = kSampleBufferPath;
    mSystem.mWritesUntilFault = 1;
    mSystem.mWriteFault = ENOSPC;
    run(kThree, 4, {});
    EXPECT_EQ(played(), "aaab");
    EXPECT_EQ(mLog.take(), (Lines{"INFO Starting endless simulation loop",
                                  "ERROR error writing file /dev/adc-in",
                                  "ERROR Error while writing data to sample buffer."}));

    restart(); // and now with a command that comes while nothing has been written
    mSystem.mWriteFault = ENOSPC;
    run(kThree, 3, {{0, "s2\n"}});
    EXPECT_EQ(played(), "bbb");

    restart(); // and the only block of a pass
    mSystem.mWriteFault = ENOSPC;
    run("0,1,a\n", 2, {});
    EXPECT_EQ(played(), "aa");
    EXPECT_TRUE(mSystem.mWaits.empty());
}

TEST_F(SimulatorTest, RepeatedRefusalsAreRetriedAfterGrowingWaits)
{
    TestDevice::makeLink(kSampleBufferPath, "/dev/full");
    const qint64 start = toNanoseconds(mSystem.mMonotonic);
    mSystem.mOnWait = [this] {
        if (mSystem.mWaits.size() == 3) {
            TestDevice::send("s1\n");
        } else if (mSystem.mWaits.size() == 10) {
            throw EndOfTest();
        }
    };
    runUntilEndOfTest(kThree);
    EXPECT_EQ(mSystem.mWaits, (std::vector<qint64>{10'000, 20'000, 40'000, 80'000, 160'000, 320'000,
                                                   640'000, 1'000'000, 1'000'000, 1'000'000}));
    constexpr qint64 kWaited = 10 + 20 + 80 + 160 + 320 + 640 + 1000 + 1000; // ms, one is cut short
    EXPECT_EQ(toNanoseconds(mSystem.mMonotonic) - start, kWaited * 1'000'000);
    EXPECT_EQ(mLog.errors(), 2 * 11) << "the second attempt was made at once";
    EXPECT_THAT(mLog.take(), testing::Contains("INFO Execute Config 1 once"));
}

TEST_F(SimulatorTest, PlaysInOrder)
{
    struct Play
    {
        const char* mConfig;
        std::map<size_t, std::string> mCommands; ///< sent after that many samples
        const char* mPlayed;
    };
    const Play kPlays[] = {
        {"0,1,a\n1,1,b\n1,2,c\n-1,1,\n", {}, "bccbcc"},
        {"0,3,e\n0,1,a\n0,2,e\n0,1,b\n", {}, "ababab"},        // e has no sample
        {"0,3,e\n0,1,a\n1,1,c\n", {{0, "x\nx\ns1\n"}}, "caa"}, // but each play checks for a command
        {"0,2,e\n0,1,a\n1,1,c\n", {{0, "x\nx\ns1\n"}}, "aca"},
        {kThree, {{1, "s1\n2\n"}}, "acbbbbbb"},
        {kThree, {{1, "s1\n"}, {2, "s2\n"}}, "acbbbaab"},
        {"0,1,a\n1,0,b\n2,1,e\n", {{1, "s1\n"}, {2, "s2\n"}}, "aaaa"}, // nothing, once
        {kThree, {{1, "s"}, {4, "2\n"}}, "aababbbaab"},
        {"0,1,e\n1,1,c\n0,1,e\n", {{0, "s1\n"}}, "c"}};
    for (const Play& it : kPlays) {
        SCOPED_TRACE(it.mPlayed);
        restart();
        run(it.mConfig, std::string(it.mPlayed).size(), it.mCommands);
        EXPECT_EQ(played(), it.mPlayed);
        EXPECT_TRUE(mSystem.mWaits.empty()) << "no wait but the writer's";
        EXPECT_EQ(mLog.mEvents.at(0).mText, "Starting endless simulation loop");
    }
}

TEST_F(SimulatorTest, WaitsForACommandInsteadOfSpinning)
{
    struct Idle
    {
        const char* mConfig;
        const char* mCommand; ///< that wakes the loop in its third wait
        const char* mPlayed;  ///< by the command
        int mPolls;           ///< at most
    };
    for (const Idle& it : {Idle{"0,0,a\n1,2,b\n", "s1\n", "bb", 40},
                           Idle{"0,1,a\n-1,7,\n", "s0\n", "a", 40}, // a number without entries
                           Idle{"", "s0\n", "", 40}, Idle{"0,1,e\n0,3,e\n1,1,c\n", "s1\n", "c", 40},
                           Idle{"0,4294967295,e\n1,1,c\n", "s1\n", "c", 4100}}) {
        SCOPED_TRACE(it.mConfig);
        restart();
        const qint64 start = toNanoseconds(mSystem.mMonotonic);
        int waits = 0;
        mSystem.mPolls = 0;
        mSystem.mOnWait = [&waits, &it] {
            if (++waits == 3) {
                TestDevice::send(it.mCommand);
            } else if (waits == 4) {
                throw EndOfTest();
            }
        };
        runUntilEndOfTest(it.mConfig);
        EXPECT_EQ(std::exchange(mSystem.mWaits, {}), (std::vector<qint64>(4, 1'000'000)));
        EXPECT_LE(mSystem.mPolls, it.mPolls);
        EXPECT_EQ(toNanoseconds(mSystem.mMonotonic) - start, 2 * kSecond) << "woken at once";
        const Lines log = mLog.take();
        EXPECT_THAT(log.at(1), testing::HasSubstr("has nothing to play"));
        EXPECT_THAT(log.at(2), testing::StartsWith("INFO Execute"));
        EXPECT_EQ(log.size(), *it.mConfig == 0 ? 3U : 4U) << "reported once for each change";
        EXPECT_EQ(played(), it.mPlayed);
    }
}

/** Two passes each: nothing spins, and the samples that follow are not delayed for long. */
TEST_F(SimulatorTest, ManyPlaysWithoutASampleCostShortWaits)
{
    for (const auto& [config, waits] :
         {std::pair("0,2500,e\n0,1,a\n", 4U), std::pair("0,999,e\n0,1,a\n0,999,e\n0,1,a\n", 0U)}) {
        restart();
        run(config, 2, {});
        EXPECT_EQ(std::exchange(mSystem.mWaits, {}), std::vector<qint64>(waits, 10'000));
    }
}
} // namespace
