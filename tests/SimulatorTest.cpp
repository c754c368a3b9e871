#include "Simulator.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

namespace {
namespace fs = std::filesystem;

/** Thrown out of a system call in order to leave the endless loop. */
struct EndOfTest
{
};

/**
 * Works in a directory with the value files a, b and c of one sample, whose auxiliary word is the
 * letter, and e without a sample.
 */
class SimulatorTest : public testing::Test
{
protected:
    SimulatorTest()
    {
        fs::current_path(mFiles.path(""));
        mDevice.makeDriver();
        for (const char letter : {'a', 'b', 'c'}) {
            mFiles.make(std::string(1, letter), valueLine(std::to_string(letter), "50"));
        }
        mFiles.make("e", "# nothing\n");
    }
    ~SimulatorTest() override { fs::current_path("/"); }

    bool loadConfig(const std::string& text)
    {
        mFiles.make("conf", text);
        return mSimulator.loadConfigFile(QStringLiteral("conf"));
    }

    void load(const std::string& text)
    {
        ASSERT_TRUE(loadConfig(text));
        ASSERT_TRUE(mSimulator.loadDataFiles());
        mLog.takeLines();
    }

    /** The letters of the samples that have arrived, in their order. */
    std::string played() const
    {
        std::string letters;
        for (const SampleRecord& record : mDevice.records()) {
            letters += static_cast<char>(record.mAuxWord);
        }
        return letters;
    }

    size_t playedCount() const { return fs::file_size(kSampleBufferPath) / sizeof(SampleRecord); }

    void runUntilEndOfTest() { EXPECT_THROW(mSimulator.startEndless(), EndOfTest); }

    /** Runs until so many samples have arrived; sends each command when its number has. */
    void run(size_t samples, std::map<size_t, std::string> commands = {})
    {
        mSystem.mOnPoll = [this, samples, commands]() mutable {
            const size_t count = playedCount();
            if (count >= samples) {
                throw EndOfTest();
            }
            const auto command = commands.find(count);
            if (command != commands.end()) {
                mDevice.send(command->second);
                commands.erase(command);
            }
        };
        runUntilEndOfTest();
    }

    TestDevice mDevice;
    TestFiles mFiles;
    LogCapture mLog;
    VirtualSystem mSystem;
    Simulator mSimulator;
};

TEST_F(SimulatorTest, LoadsTheConfiguration)
{
    mLog.takeLines();
    EXPECT_TRUE(loadConfig("0,1,a\n"));
    EXPECT_EQ(mLog.mEvents.at(1).mLogger, "Simulator");
    EXPECT_EQ(mLog.mEvents.at(1).mMethod, "Simulator::loadConfigFile");
    EXPECT_EQ(mLog.takeLines(), (Lines{"INFO Total 1 lines parsed.", "INFO File 'conf' loaded."}));
    EXPECT_FALSE(holdsOpen(mFiles.path("conf")));
}

TEST_F(SimulatorTest, ConfigurationThatDoesNotOpen)
{
    mLog.takeLines();
    EXPECT_FALSE(mSimulator.loadConfigFile(QStringLiteral("größe.conf")));
    EXPECT_EQ(mLog.mEvents.at(0).mLogger, "Configuration");
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"FATAL openFileInternal() : Das I/O-Device 'größe.conf' existiert nicht.",
                     "ERROR Could not open file 'größe.conf'."}));
}

TEST_F(SimulatorTest, RejectedLineKeepsTheEntriesBeforeIt)
{
    EXPECT_TRUE(loadConfig("0,1,a\nnonsense\n1,1,b\n"));
    EXPECT_EQ(mLog.errors(), 2);
    mLog.takeLines();
    EXPECT_TRUE(mSimulator.loadDataFiles());
    EXPECT_EQ(mLog.takeLines(), (Lines{"INFO Parsing a'.", "INFO Total 1 lines parsed.",
                                       "INFO All data files parsed."}));
}

TEST_F(SimulatorTest, LoadsValueFilesInOrderUpToTheFirstFailure)
{
    const Lines a{"INFO Parsing a'.", "INFO Total 1 lines parsed."};
    const Lines all{"INFO All data files parsed."};
    const Lines gap{"ERROR no configuration found."};
    const Lines missing{"INFO Parsing x'.",
                        "FATAL openFileInternal() : Das I/O-Device 'x' existiert nicht.",
                        "ERROR could not open file: x"};
    const Lines bad{"INFO Parsing bad'.",
                    "ERROR bad:1: Wrong number of parameter. Expected: 13, found 1: nonsense",
                    "ERROR Problem while handling line. abort.", "INFO Total 1 lines parsed."};
    const struct
    {
        const char* config;
        std::vector<Lines> messages;
        bool ok;
    } kCases[] = {
        {"", {all}, true},
        {"1,1,a\n0,1,a\n2,1,a\n0,1,a\n", {a, a, a, a, all}, true},
        {"0,0,a\n", {a, all}, true},
        {"0,1,a\n2,1,a\n", {a, gap}, false},
        {"1,1,a\n", {gap}, false},
        {"0,1,a\n0,1,x\n0,1,a\n1,1,a\n", {a, missing}, false},
        {"0,1,bad\n0,1,a\n1,1,a\n", {bad}, false},
        {"0,1,x\n2,1,a\n", {missing, gap}, false},
    };
    mFiles.make("bad", "nonsense\n");
    for (const auto& row : kCases) {
        Simulator simulator;
        mFiles.make("conf", row.config);
        ASSERT_TRUE(simulator.loadConfigFile(QStringLiteral("conf")));
        mLog.takeLines();
        EXPECT_EQ(simulator.loadDataFiles(), row.ok) << row.config;
        Lines expected;
        for (const Lines& messages : row.messages) {
            expected.insert(expected.end(), messages.begin(), messages.end());
        }
        EXPECT_EQ(mLog.takeLines(), expected) << row.config;
    }
}

TEST_F(SimulatorTest, DoesNotStartWithoutTheDriver)
{
    mDevice.remove(kSampleBufferPath);
    mLog.takeLines();
    mSimulator.startEndless();
    EXPECT_EQ(mLog.takeLines(), (Lines{"FATAL openFile : Das Device '/dev/adc-in' existiert nicht.",
                                       "FATAL Could not initialze Prus-Simulation"}));
}

struct Play
{
    const char* name;
    const char* config;
    std::map<size_t, std::string> commands; ///< sent after that many samples
    const char* played;
};

void PrintTo(const Play& play, std::ostream* out)
{
    *out << play.name;
}

class SimulatorPlayTest : public SimulatorTest, public testing::WithParamInterface<Play>
{
};

constexpr char kThree[] = "0,2,a\n0,1,b\n1,1,c\n1,2,a\n2,3,b\n";

TEST_P(SimulatorPlayTest, PlaysInThisOrder)
{
    const std::string expected = GetParam().played;
    load(GetParam().config);
    run(expected.size(), GetParam().commands);
    EXPECT_EQ(played(), expected);
    EXPECT_TRUE(mSystem.mWaits.empty()) << "no wait but the writer's";
    EXPECT_EQ(mLog.mEvents.at(0).mText, "Starting endless simulation loop");
}

INSTANTIATE_TEST_SUITE_P(
    , SimulatorPlayTest,
    testing::Values(
        Play{"ContinuousOverAndOver", kThree, {}, "aabaabaab"},
        Play{"ContinuousOfTheFile", "0,1,a\n1,1,b\n1,2,c\n-1,1,\n", {}, "bccbcc"},
        Play{"ZeroRepetitions", "0,0,c\n0,1,a\n0,0,c\n0,1,b\n", {}, "ababab"},
        Play{"EmptyFileAmongOthers", "0,4000000000,e\n0,1,a\n0,2,e\n0,1,b\n", {}, "ababab"},
        Play{"OnceInsideRepetitions", kThree, {{1, "s1\n"}}, "acaaaab"},
        Play{"OnceAfterTheLastEntry", kThree, {{3, "s2\n"}}, "aabbbbaab"},
        Play{"OnceOfTheContinuous", kThree, {{1, "s0\n"}}, "aaabaab"},
        Play{"ContinuousFromNowOn", kThree, {{2, "2\n"}}, "aabbbbbb"},
        Play{"OnceThenContinuous", kThree, {{1, "s1\n2\n"}}, "acbbbbbb"},
        Play{"OnceReplacedByOnce", kThree, {{1, "s1\n"}, {2, "s2\n"}}, "acbbbaab"},
        Play{"RejectedCommand", kThree, {{1, "s3\n"}, {2, "x\n"}}, "aabaab"},
        Play{"UnfinishedCommand", kThree, {{1, "s"}, {4, "2\n"}}, "aababbbaab"},
        Play{"CommandBeforeTheFirst", kThree, {{0, "s2\n"}}, "aabaab"}),
    testing::PrintToStringParamName());

TEST_F(SimulatorTest, FailedWriteDropsTheRestOfThePassAndCostsNoWait)
{
    load(kThree);
    mSystem.mFaultyFile = kSampleBufferPath;
    mSystem.mWritesUntilFault = 1;
    mSystem.mWriteFault = ENOSPC;
    run(4);
    EXPECT_EQ(played(), "aaab");
    EXPECT_EQ(mLog.takeLines(), (Lines{"INFO Starting endless simulation loop",
                                       "ERROR error writing file /dev/adc-in",
                                       "ERROR Error while writing data to sample buffer."}));
    EXPECT_TRUE(mSystem.mWaits.empty());
    const std::vector<SampleRecord> records = mDevice.records();
    EXPECT_EQ(records[1].mNanoseconds - records[0].mNanoseconds, 2 * 55'555U)
        << "the failed sample has its time";
}

TEST_F(SimulatorTest, SleepsOnlyInTheWriter)
{
    mFiles.make("a", [] {
        std::string lines;
        for (int i = 0; i < 361; ++i) {
            lines += valueLine("97", "50");
        }
        return lines;
    }());
    load("0,1,a\n");
    run(361 * 11);
    EXPECT_EQ(mSystem.mSleeps.size(), 2U); // first block and twelfth of 22
}

struct Idle
{
    const char* name;
    const char* config;
    const char* sampleBuffer; ///< what the path leads to
    const char* command;      ///< that wakes the loop
    const char* played;       ///< by the command
    size_t errors;            ///< messages of one pass
};

void PrintTo(const Idle& idle, std::ostream* out)
{
    *out << idle.name;
}

class SimulatorIdleTest : public SimulatorTest, public testing::WithParamInterface<Idle>
{
};

TEST_P(SimulatorIdleTest, WaitsForACommandInsteadOfSpinning)
{
    const Idle& row = GetParam();
    if (row.sampleBuffer != nullptr) {
        mDevice.makeLink(kSampleBufferPath, row.sampleBuffer);
    }
    load(row.config);
    const qint64 start = toNanoseconds(mSystem.mMonotonic);
    int idlePasses = 0;
    mSystem.mOnWait = [&] {
        ++idlePasses;
        EXPECT_LE(mSystem.mPolls, 10) << "polls in one pass";
        mSystem.mPolls = 0;
        if (idlePasses <= 2) {
            Lines lines = mLog.takeLines();
            EXPECT_EQ(lines.size(), row.errors + (idlePasses == 1 ? 1 : 0));
        }
        if (idlePasses == 3) {
            mLog.takeLines();
            mDevice.send(row.command);
        } else if (idlePasses == 4) {
            throw EndOfTest();
        }
    };
    runUntilEndOfTest();
    EXPECT_EQ(mSystem.mWaits, (std::vector<qint64>(4, 1'000'000)));
    EXPECT_EQ(toNanoseconds(mSystem.mMonotonic) - start, 2'000'000'000)
        << "the command is taken at once";
    EXPECT_EQ(mLog.takeLines().at(0).substr(0, 20), "INFO Execute Config ");
    if (row.sampleBuffer == nullptr) {
        EXPECT_EQ(played(), row.played);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , SimulatorIdleTest,
    testing::Values(Idle{"RepetitionsOfZero", "0,0,a\n1,2,b\n", nullptr, "s1\n", "bb", 0},
                    Idle{"NumberWithoutEntries", "0,1,a\n-1,7,\n", nullptr, "s0\n", "a", 0},
                    Idle{"EmptyConfiguration", "", nullptr, "s0\n", "", 0},
                    Idle{"FilesWithoutSamples", "0,1,e\n0,3,e\n1,1,c\n", nullptr, "s1\n", "c", 0},
                    Idle{"HugeRepetitions", "0,4294967295,e\n1,1,c\n", nullptr, "s1\n", "c", 0},
                    Idle{"FailingBuffer", "0,5,a\n0,1,b\n1,1,c\n", "/dev/full", "s1\n", "", 2}),
    testing::PrintToStringParamName());
} // namespace
