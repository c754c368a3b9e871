#include "PrussSimulation.h"

#include <cerrno>
#include <climits>
#include <tuple>

#include "Files.h"
#include "WriterFixture.h"

namespace {
class PrussSimulationTest : public WriterFixture
{
};

TEST_F(PrussSimulationTest, InitEndsWithTheFirstFileThatDoesNotOpen)
{
    const Lines& paths = TestDevice::driverPaths();
    for (size_t bad = 0; bad < paths.size(); ++bad) {
        for (const bool missing : {true, false}) {
            SCOPED_TRACE(paths[bad]);
            TestDevice::makeDriver();
            TestDevice::makeDirectory(paths[bad]);
            if (missing) {
                TestDevice::remove(paths[bad]);
            }
            PrussSimulation writer;
            EXPECT_EQ(mLog.take(), Lines{"INFO start time1700000005"});
            EXPECT_FALSE(writer.init());
            EXPECT_EQ(mLog.mEvents.at(0).mOrigin,
                      "PrussSimulation source/PrussSimulation.cpp PrussSimulation::openFile");
            EXPECT_EQ(mLog.take(),
                      Lines{"FATAL openFile : Das Device '" + paths[bad] +
                            (missing ? "' existiert nicht." : "' kann nicht geöffnet werden")});
            for (size_t i = 0; i < paths.size(); ++i) {
                EXPECT_EQ(holdsOpen(paths[i]), i < bad);
            }
            if (bad <= 2) { // without the sample buffer or f2h nothing is taken
                InputValues values = items(1);
                EXPECT_EQ(writer.writeSamples(values), 0);
                EXPECT_EQ(mLog.take(), Lines{bad == 0 ? "ERROR Samplebuffer not open"
                                                      : "ERROR Peri2HostFile not open"});
                EXPECT_NE(values.nextItem(), nullptr);
            }
        }
    }
}

TEST_F(PrussSimulationTest, TimeSpentOpeningDoesNotCount)
{
    mWriter = std::make_unique<PrussSimulation>();
    mSystem.mTickPerReading = 1'000'000;
    ASSERT_TRUE(mWriter->init());
    const qint64 lastReading = now() - 1'000'000;
    play(1);
    EXPECT_EQ(lastStamp(), lastReading + kStepOf50Hz);
}

TEST_F(PrussSimulationTest, WritesBlocksOfAtMostOnePeriod)
{
    const std::tuple<int, std::vector<int>> kCases[] = {
        {0, {0}},        {1, {1}},          {359, {359}},        {360, {360, 0}},
        {361, {360, 1}}, {500, {360, 140}}, {720, {360, 360, 0}}};
    startWriter();
    size_t written = 0;
    for (const auto& [count, blocks] : kCases) {
        InputValues values = items(count);
        for (size_t i = 0; i < blocks.size(); ++i) {
            EXPECT_EQ(mWriter->writeSamples(values), i + 1 == blocks.size() ? 1 : 0) << count;
            written += static_cast<size_t>(blocks[i]);
            EXPECT_EQ(TestDevice::records().size(), written);
            EXPECT_EQ(mWriter->samplesWritten(), written);
        }
        EXPECT_EQ(mWriter->writeSamples(values), 1) << "stays exhausted";
    }
}

TEST_F(PrussSimulationTest, StampsRecordsAndItems)
{
    mSystem.mRealtime = {1'700'000'005, 990'000'000};
    const qint64 start = now();
    startWriter();
    InputValues values = items(500);
    EXPECT_EQ(play(values), 1);
    play(10, "60");
    values.resetIterator();
    const std::vector<SampleRecord> records = TestDevice::records();
    ASSERT_EQ(records.size(), 510U);
    for (quint32 i = 0; i < 500; ++i) {
        const SampleRecord& record = records[i];
        ASSERT_EQ(stampOf(record), start + (i + 1) * kStepOf50Hz);
        ASSERT_LT(record.mNanoseconds, kSecond);
        ASSERT_EQ(std::make_tuple(record.mAuxWord, record.mFlags), std::make_tuple(i, 2U));
        for (int channel = 0; channel < kChannelCount; ++channel) {
            ASSERT_EQ(record.mValues[channel], (channel + 1) * (channel % 2 == 0 ? 1 : -1));
        }
        ASSERT_EQ(stampOf(*values.nextItem()), stampOf(record));
    }
    EXPECT_EQ(stampOf(records[509]), start + 500 * kStepOf50Hz + 10 * 46'296);
}

TEST_F(PrussSimulationTest, ComputesStepAndPeriodInSinglePrecision)
{
    const std::tuple<const char*, qint64, quint32> kCases[] = {
        {"50", 55'555, 2'000'000},
        {"60", 46'296, 1'666'666},
        {"49.95", 55'611, 2'002'002},
        {"50.05", 55'500, 1'998'002},
        {"16.7", 166'333, 5'988'023},
        {"1", 2'777'777, 100'000'000},
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

TEST_F(PrussSimulationTest, FrequencyCountsAtTheFirstItemOfABlock)
{
    startWriter();
    InputValues values = items(100);
    for (const char* frequency : {"60", "0", "60"}) { // 0 is never the first
        append(values, 100, frequency);
    }
    EXPECT_EQ(play(values), 1);
    const std::vector<SampleRecord> records = TestDevice::records();
    for (size_t i = 1; i < records.size(); ++i) {
        ASSERT_EQ(stampOf(records[i]) - stampOf(records[i - 1]), i < 360 ? kStepOf50Hz : 46'296);
    }
    EXPECT_EQ(mLog.take(), Lines{});
}

TEST_F(PrussSimulationTest, RefusesFrequenciesOutsideTheDesignOncePerChange)
{
    // Frequency, how the message shows it if there is one, frequency and step in force.
    const std::tuple<const char*, const char*, const char*, qint64> kSteps[] = {
        {"nan", "nan", "50", kStepOf50Hz}, {"nan", nullptr, "50", kStepOf50Hz},
        {"0", "0", "50", kStepOf50Hz},     {"-50", "-50", "50", kStepOf50Hz},
        {"60", nullptr, "60", 46'296},     {"-50", "-50", "60", 46'296},
        {"inf", "inf", "60", 46'296},      {"-inf", "-inf", "60", 46'296},
        {"3e6", "3e+06", "60", 46'296},    {"0.0027777778", "0.00277778", "60", 46'296},
        {"60", nullptr, "60", 46'296},     {"1e-30", "1e-30", "60", 46'296},
        {"60", nullptr, "60", 46'296},     {"1e-30", "1e-30", "60", 46'296},
        {"50", nullptr, "50", kStepOf50Hz}};
    startWriter();
    const TestFiles files;
    for (const auto& [frequency, refused, inForce, step] : kSteps) {
        SCOPED_TRACE(frequency);
        InputValues values;
        const QString name = files.make("values", repeated(valueLine("0", frequency), 2));
        ASSERT_TRUE(values.openFile(name) && values.parseCompleteFile());
        mLog.take();
        EXPECT_EQ(play(values), 1);
        const std::vector<SampleRecord> records = TestDevice::records();
        EXPECT_EQ(lastStamp() - stampOf(records[records.size() - 2]), step);
        const std::string message =
            "ERROR " + name.toStdString() + ": frequency of " +
            (refused == nullptr ? "" : refused) +
            " Hz cannot be played (step of 0 ns or of a second and more), going on with " +
            inForce + " Hz";
        EXPECT_EQ(mLog.take(), refused == nullptr ? Lines{} : Lines{message});
        EXPECT_EQ(TestDevice::words(kF2hPath).at(0), mWriter->samplesWritten() < 24
                                                         ? 2'000'000U // of the first block
                                                         : 1'666'666U);
    }
}

TEST_F(PrussSimulationTest, FailingBlockIsConsumedAndCostsNoPacing)
{
    startWriter();
    InputValues values = items(361);
    mSystem.mFaultyFile = kSampleBufferPath;
    for (int i = 0; i < 2; ++i) {
        mSystem.mWriteFault = EIO;
        EXPECT_EQ(mWriter->writeSamples(values), -1);
        EXPECT_EQ(mLog.take(), Lines{"ERROR error writing file /dev/adc-in"});
    }
    EXPECT_EQ(mWriter->samplesWritten(), 0U);
    EXPECT_EQ(mWriter->writeSamples(values), 1) << "both blocks are consumed";
    values.resetIterator();
    EXPECT_EQ(stampOf(*values.nextItem()), now() + kStepOf50Hz);
    EXPECT_TRUE(mSystem.mSleeps.empty());
    EXPECT_TRUE(TestDevice::words(kF2hPath).empty());

    EXPECT_EQ(play(360), 1);
    EXPECT_EQ(mSystem.mSleeps.size(), 1U) << "the countdown had not moved";
    EXPECT_EQ(TestDevice::records().size(), 360U);
}
} // namespace
