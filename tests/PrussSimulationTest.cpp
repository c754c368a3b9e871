#include "PrussSimulation.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <tuple>

#include "Files.h"
#include "WriterFixture.h"

namespace {
class PrussSimulationTest : public WriterFixture
{
};

TEST_F(PrussSimulationTest, TakesNothingWithoutSampleBufferOrF2h)
{
    for (const auto& [missing, message] :
         {std::pair(kSampleBufferPath, "ERROR Samplebuffer not open"),
          std::pair(kF2hPath, "ERROR Peri2HostFile not open")}) {
        TestDevice::makeDriver();
        TestDevice::remove(missing);
        PrussSimulation writer;
        EXPECT_FALSE(writer.init());
        mLog.take();
        InputValues values = items(1);
        EXPECT_EQ(writer.writeSamples(values), 0);
        EXPECT_EQ(mLog.take(), Lines{message});
        EXPECT_NE(values.nextItem(), nullptr);
    }
}

TEST_F(PrussSimulationTest, FirstUnusableFileIsReported)
{
    const auto expectFailure = [this](const std::string& path, const std::string& problem) {
        PrussSimulation writer;
        mLog.take();
        EXPECT_FALSE(writer.init());
        EXPECT_EQ(
            mLog.takeFrom("PrussSimulation source/PrussSimulation.cpp PrussSimulation::openFile"),
            Lines{"FATAL openFile : Das Device '" + path + "' " + problem});
    };
    // They are opened in this order, so each is the first faulty one.
    std::vector<std::string> paths = TestDevice::driverPaths();
    std::reverse(paths.begin(), paths.end());
    for (const std::string& path : paths) {
        TestDevice::makeDirectory(path);
        expectFailure(path, "kann nicht geöffnet werden");
        TestDevice::makeLink(path, "/etc/vx/nowhere");
        expectFailure(path, "existiert nicht.");
    }
    EXPECT_FALSE(std::filesystem::exists("/etc/vx/nowhere"));
}

TEST_F(PrussSimulationTest, TimeSpentOpeningDoesNotCount)
{
    constexpr qint64 kTick = 1'000'000;
    mWriter = std::make_unique<PrussSimulation>();
    mSystem.mTickPerReading = kTick;
    const qint64 opened = now() + kTick; // the clock is read before and after
    ASSERT_TRUE(mWriter->init());
    play(1);
    EXPECT_EQ(lastStamp(), opened + kStepOf50Hz);
}

/** By the description: the product's own structure could hide two swapped members. */
TEST_F(PrussSimulationTest, RecordHasTheLayoutThatTheDriverReads)
{
    mSystem.mRealtime = {1'700'000'000, 0};
    startWriter();
    InputValues values;
    EXPECT_TRUE(values.parseLine(QStringLiteral("1;;7;2;50;-1;2;3;4;5;6;7;2147483647")));
    play(values);
    EXPECT_EQ(readFile(kSampleBufferPath),
              std::string("\x00\xf1\x53\x65\x03\xd9\x00\x00\x07\x00\x00\x00\x02\x00\x00\x00"
                          "\xff\xff\xff\xff\x02\x00\x00\x00\x03\x00\x00\x00\x04\x00\x00\x00"
                          "\x05\x00\x00\x00\x06\x00\x00\x00\x07\x00\x00\x00\xff\xff\xff\x7f",
                          48));
}

TEST_F(PrussSimulationTest, FrequencyOfTheFirstItemAppliesToTheBlock)
{
    InputValues values = items(100);
    for (int i = 0; i < 300; ++i) {
        values.parseLine(QStringLiteral(";;0;0;60;1;2;3;4;5;6;7;8"));
    }
    startWriter();
    play(values);
    const std::vector<SampleRecord> records = TestDevice::records();
    for (size_t i = 1; i < records.size(); ++i) {
        ASSERT_EQ(stampOf(records[i]) - stampOf(records[i - 1]), i < 360 ? kStepOf50Hz : 46'296);
    }
}

TEST_F(PrussSimulationTest, ComputesStepAndPeriodInSinglePrecision)
{
    const std::tuple<const char*, qint64, quint32> kCases[] = {
        {"50", 55'555, 2'000'000},
        {"49.95", 55'611, 2'002'002},
        {"16.7", 166'333, 5'988'023},
        {"0.02", 138'888'896, UINT_MAX},
        {"0.0233", 119'217'936, 4'291'845'632},
        {"2.7e6", 1, 37},
        {"0.00278", 999'200'640, UINT_MAX}};
    startWriter();
    for (const auto& [frequency, step, period] : kCases) {
        InputValues values = items(2, frequency);
        for (int block = 0; block < 11; ++block) { // one of them writes the f2h record
            play(values);
        }
        const std::vector<SampleRecord> records = TestDevice::records();
        EXPECT_EQ(lastStamp() - stampOf(records[records.size() - 2]), step) << frequency;
        EXPECT_EQ(TestDevice::words(kF2hPath).at(0), period) << frequency;
        mSystem.mRealtime = fromNanoseconds(lastStamp());
    }
    EXPECT_EQ(mLog.errors(), 0);
}

TEST_F(PrussSimulationTest, RefusesFrequenciesOutsideTheDesignOncePerEntry)
{
    // Frequency, its text in the message if there is one, current frequency and step.
    const std::tuple<const char*, const char*, const char*, qint64> kSteps[] = {
        {"nan", "nan", "50", kStepOf50Hz}, {"0", "0", "50", kStepOf50Hz},
        {"60", nullptr, "60", 46'296},     {"-50", "-50", "60", 46'296},
        {"inf", "inf", "60", 46'296},      {"3e6", "3e+06", "60", 46'296},
        {"1e-30", "1e-30", "60", 46'296},  {"0.0027777778", "0.00277778", "60", 46'296},
        {"50", nullptr, "50", kStepOf50Hz}};
    startWriter();
    for (const auto& [frequency, refused, inForce, step] : kSteps) {
        SCOPED_TRACE(frequency);
        InputValues values = items(2, frequency);
        EXPECT_EQ(play(values), 1);
        const std::vector<SampleRecord> records = TestDevice::records();
        EXPECT_EQ(lastStamp() - stampOf(records[records.size() - 2]), step);
        const std::string message =
            "ERROR : frequency of " + std::string(refused == nullptr ? "" : refused) +
            " Hz cannot be played (step of 0 ns or of a second and more), going on with " +
            inForce + " Hz";
        EXPECT_EQ(mLog.takeFrom(
                      "PrussSimulation source/PrussSimulation.cpp PrussSimulation::writeSamples"),
                  refused == nullptr ? Lines{} : Lines{message});
        play(2, inForce);
        play(values);
        EXPECT_EQ(mLog.take(), Lines{}) << "not again, though another one was between";
    }
}

TEST_F(PrussSimulationTest, FailingBlockIsConsumedAndCostsNoPacing)
{
    startWriter();
    InputValues values = items(361);
    mSystem.mFaultyFile = kSampleBufferPath;
    for (const Lines& messages : {Lines{"ERROR error writing file /dev/adc-in"}, Lines{}}) {
        mSystem.mWriteFault = EIO;
        mLog.mFull = messages.empty(); // the block is not written, even if the report fails
        EXPECT_EQ(mWriter->writeSamples(values), -1);
        EXPECT_EQ(mLog.take(), messages);
    }
    mLog.mFull = false;
    EXPECT_EQ(mWriter->samplesWritten(), 0U);
    EXPECT_EQ(mWriter->writeSamples(values), 1) << "both blocks are consumed";
    values.resetIterator();
    EXPECT_EQ(stampOf(*values.nextItem()), now() + kStepOf50Hz);
    EXPECT_TRUE(mSystem.mSleeps.empty());
    EXPECT_TRUE(TestDevice::words(kF2hPath).empty());

    EXPECT_EQ(play(360), 1);
    EXPECT_EQ(mSystem.mSleeps.size(), 1U) << "the countdown had not moved";
}

TEST_F(PrussSimulationTest, ExceptionOfTheWriteIsReportedAndPlayingContinues)
{
    startWriter();
    mSystem.mFaultyFile = kSampleBufferPath;
    mSystem.mWriteFault = VirtualSystem::kThrow;
    InputValues values = items(360);
    EXPECT_EQ(mWriter->writeSamples(values), 0);
    EXPECT_EQ(mLog.take(), Lines{"FATAL Sample Buffer Write Error"});
    EXPECT_EQ(mSystem.mSleeps.size(), 1U) << "paced";
}
} // namespace
