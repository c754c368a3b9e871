#include "PrussSimulation.h"

#include <cerrno>

#include "Files.h"
#include "WriterFixture.h"

namespace {
class PrussSimulationTest : public WriterFixture
{
};

TEST_F(PrussSimulationTest, ConstructionLogsTheStartTimeAndOpensNothing)
{
    mWriter = std::make_unique<PrussSimulation>();
    EXPECT_EQ(mLog.mEvents.at(0).mLogger, "PrussSimulation");
    EXPECT_EQ(mLog.takeLines(), Lines{"INFO start time1700000005"});
    for (const std::string& path : TestDevice::driverPaths()) {
        EXPECT_FALSE(holdsOpen(path));
    }
    InputValues values;
    append(values, 1, "50");
    values.resetIterator();
    EXPECT_EQ(mWriter->writeSamples(values), 0);
    EXPECT_EQ(mLog.takeLines(), Lines{"ERROR Samplebuffer not open"});
    EXPECT_NE(values.nextItem(), nullptr) << "nothing is taken";
}

TEST_F(PrussSimulationTest, InitEndsWithTheFirstFileThatDoesNotOpen)
{
    const std::vector<std::string>& paths = TestDevice::driverPaths();
    int fatals = 0;
    for (size_t bad = 0; bad < paths.size(); ++bad) {
        for (const bool missing : {true, false}) {
            SCOPED_TRACE(paths[bad]);
            mDevice.makeDriver();
            mDevice.makeDirectory(paths[bad]);
            if (missing) {
                mDevice.remove(paths[bad]);
            }
            PrussSimulation writer;
            mLog.takeLines();
            EXPECT_FALSE(writer.init());
            EXPECT_EQ(mLog.mEvents.at(0).mMethod, "PrussSimulation::openFile");
            EXPECT_EQ(mLog.takeLines(),
                      Lines{"FATAL openFile : Das Device '" + paths[bad] +
                            (missing ? "' existiert nicht." : "' kann nicht geöffnet werden")});
            EXPECT_EQ(mLog.fatals(), ++fatals);
            for (size_t i = 0; i < paths.size(); ++i) {
                EXPECT_EQ(holdsOpen(paths[i]), i < bad);
            }
        }
    }
}

TEST_F(PrussSimulationTest, NeedsTheF2hFile)
{
    mDevice.makeDirectory(kF2hPath);
    PrussSimulation writer;
    EXPECT_FALSE(writer.init());
    mLog.takeLines();
    InputValues values;
    append(values, 1, "50");
    values.resetIterator();
    EXPECT_EQ(writer.writeSamples(values), 0);
    EXPECT_EQ(mLog.takeLines(), Lines{"ERROR Peri2HostFile not open"});
}

TEST_F(PrussSimulationTest, TimeSpentOpeningDoesNotCount)
{
    mWriter = std::make_unique<PrussSimulation>();
    mSystem.mTickPerReading = 1'000'000;
    ASSERT_TRUE(mWriter->init());
    mSystem.mTickPerReading = 0;
    const qint64 lastReading = now() - 1'000'000;
    play(1);
    EXPECT_EQ(stampOf(mDevice.records().at(0)), lastReading + kStepOf50Hz);
}

TEST_F(PrussSimulationTest, WritesBlocksOfAtMostOnePeriod)
{
    const struct
    {
        int items;
        std::vector<size_t> blocks;
    } kCases[] = {{0, {0}},        {1, {1}},          {359, {359}},        {360, {360, 0}},
                  {361, {360, 1}}, {500, {360, 140}}, {720, {360, 360, 0}}};
    startWriter();
    size_t written = 0;
    for (const auto& row : kCases) {
        InputValues values;
        append(values, row.items, "50");
        values.resetIterator();
        for (size_t i = 0; i < row.blocks.size(); ++i) {
            const bool isLast = i + 1 == row.blocks.size();
            EXPECT_EQ(mWriter->writeSamples(values), isLast ? 1 : 0) << row.items;
            written += row.blocks[i];
            EXPECT_EQ(mDevice.records().size(), written);
            EXPECT_EQ(mWriter->samplesWritten(), written);
        }
        EXPECT_EQ(mWriter->writeSamples(values), 1);
    }
    EXPECT_EQ(mLog.takeLines(), Lines{});
}

TEST_F(PrussSimulationTest, StampsRecordsAndItems)
{
    mSystem.mRealtime = {1'700'000'005, 990'000'000};
    const qint64 start = now();
    startWriter();
    InputValues values;
    append(values, 500, "50");
    EXPECT_EQ(play(values), 1);
    const std::vector<SampleRecord> records = mDevice.records();
    ASSERT_EQ(records.size(), 500U);
    values.resetIterator();
    for (quint32 i = 0; i < 500; ++i) {
        const SampleRecord& record = records[i];
        ASSERT_EQ(stampOf(record), start + (i + 1) * kStepOf50Hz);
        ASSERT_LT(record.mNanoseconds, 1'000'000'000U);
        ASSERT_EQ(record.mAuxWord, i);
        ASSERT_EQ(record.mFlags, 2U);
        for (int channel = 0; channel < kChannelCount; ++channel) {
            ASSERT_EQ(record.mValues[channel], (channel + 1) * (channel % 2 == 0 ? 1 : -1));
        }
        ASSERT_EQ(stampOf(*values.nextItem()), stampOf(record));
    }
}

TEST_F(PrussSimulationTest, StampsGoOnOverCasesAndFrequencies)
{
    startWriter();
    const qint64 start = now();
    play(10);
    play(10, "60");
    play(10);
    const std::vector<SampleRecord> records = mDevice.records();
    qint64 expected = start;
    for (size_t i = 0; i < records.size(); ++i) {
        expected += i / 10 == 1 ? 46'296 : kStepOf50Hz;
        EXPECT_EQ(stampOf(records[i]), expected);
    }
}

TEST_F(PrussSimulationTest, ComputesStepAndPeriodInSinglePrecision)
{
    const struct
    {
        const char* frequency;
        qint64 step;
        quint32 period;
    } kCases[] = {
        {"50", 55'555, 2'000'000},
        {"60", 46'296, 1'666'666},
        {"49.95", 55'611, 2'002'002},
        {"50.05", 55'500, 1'998'002},
        {"16.7", 166'333, 5'988'023},
        {"400", 6'944, 250'000},
        {"1", 2'777'777, 100'000'000},
        {"0.0233", 119'217'936, 4'291'845'632},
        {"0.02", 138'888'896, UINT_MAX},
        {"0.00278", 999'200'640, UINT_MAX},
        {"2.7e6", 1, 37},
    };
    startWriter();
    const qint64 start = now();
    play(1, "5e1");
    for (const auto& row : kCases) {
        mSystem.mRealtime = fromNanoseconds(start); // keeps the clocks together
        const std::vector<SampleRecord> before = mDevice.records();
        for (int block = 0; block < 11; ++block) { // so that one of them writes the f2h record
            play(2, row.frequency);
        }
        const std::vector<SampleRecord> records = mDevice.records();
        EXPECT_EQ(stampOf(records[before.size() + 1]) - stampOf(records[before.size()]), row.step)
            << row.frequency;
        EXPECT_EQ(mDevice.words(kF2hPath).at(0), row.period) << row.frequency;
    }
    for (const LogEvent& event : mLog.mEvents) {
        EXPECT_NE(event.mLevel, "ERROR") << event.mText;
    }
}

TEST_F(PrussSimulationTest, FrequencyCountsAtTheFirstItemOfABlock)
{
    startWriter();
    InputValues values;
    append(values, 100, "50");
    append(values, 100, "60");
    append(values, 100, "0"); // never at the beginning of a block
    append(values, 100, "60");
    EXPECT_EQ(play(values), 1);
    const std::vector<SampleRecord> records = mDevice.records();
    for (size_t i = 1; i < records.size(); ++i) {
        ASSERT_EQ(stampOf(records[i]) - stampOf(records[i - 1]), i < 360 ? kStepOf50Hz : 46'296);
    }
    EXPECT_EQ(mLog.takeLines(), Lines{});
}

TEST_F(PrussSimulationTest, RefusesFrequenciesOutsideTheDesignOncePerChange)
{
    const struct
    {
        const char* frequency;
        const char* refused; ///< as the message shows it; null when it is played
        const char* inForce;
        qint64 step;
    } kSteps[] = {
        {"0", "0", "50", 55'555},
        {"0", nullptr, "50", 55'555},
        {"-50", "-50", "50", 55'555},
        {"nan", "nan", "50", 55'555},
        {"nan", nullptr, "50", 55'555},
        {"60", nullptr, "60", 46'296},
        {"nan", "nan", "60", 46'296},
        {"inf", "inf", "60", 46'296},
        {"-inf", "-inf", "60", 46'296},
        {"3e6", "3e+06", "60", 46'296},
        {"0.0027777778", "0.00277778", "60", 46'296},
        {"1e-30", "1e-30", "60", 46'296},
        {"60", nullptr, "60", 46'296},
        {"1e-30", "1e-30", "60", 46'296},
        {"50", nullptr, "50", 55'555},
        {"0", "0", "50", 55'555},
    };
    startWriter();
    const TestFiles files;
    for (const auto& step : kSteps) {
        SCOPED_TRACE(&step - kSteps);
        InputValues values;
        const QString name = files.make("values", valueLine("0", step.frequency));
        ASSERT_TRUE(values.openFile(name));
        ASSERT_TRUE(values.parseCompleteFile());
        mLog.takeLines();
        const size_t before = mDevice.records().size();
        EXPECT_EQ(play(values), 1);
        EXPECT_EQ(play(values), 1);
        const std::vector<SampleRecord> records = mDevice.records();
        EXPECT_EQ(stampOf(records[before + 1]) - stampOf(records[before]), step.step);
        EXPECT_EQ(mLog.takeLines(),
                  step.refused == nullptr
                      ? Lines{}
                      : Lines{"ERROR " + name.toStdString() + ": frequency of " + step.refused +
                              " Hz cannot be played (step of 0 ns or of a second and more), going "
                              "on with " +
                              step.inForce + " Hz"});
    }
}

TEST_F(PrussSimulationTest, RefusalAtTheBeginningPlaysWithTheStepAndPeriodOf50Hz)
{
    startWriter();
    EXPECT_EQ(play(1, "nan"), 1);
    EXPECT_EQ(mDevice.words(kF2hPath).at(0), 2'000'000U);
    EXPECT_EQ(mLog.errors(), 1);
}

TEST_F(PrussSimulationTest, FailingBlockIsConsumedAndCostsNoPacing)
{
    mDevice.makeLink(kSampleBufferPath, "/dev/full");
    startWriter();
    InputValues values;
    append(values, 361, "50");
    values.resetIterator();
    EXPECT_EQ(mWriter->writeSamples(values), -1);
    EXPECT_EQ(mWriter->writeSamples(values), -1);
    EXPECT_EQ(mLog.takeLines(), (Lines{"ERROR error writing file /dev/adc-in",
                                       "ERROR error writing file /dev/adc-in"}));
    EXPECT_EQ(mWriter->samplesWritten(), 0U);
    EXPECT_EQ(mWriter->writeSamples(values), 1) << "both blocks are consumed";
    values.resetIterator();
    EXPECT_EQ(stampOf(*values.nextItem()), now() + kStepOf50Hz);
    EXPECT_TRUE(mSystem.mSleeps.empty());
    EXPECT_TRUE(mDevice.words(kF2hPath).empty());
}

TEST_F(PrussSimulationTest, WritingGoesOnAfterAFailedBlock)
{
    startWriter();
    mSystem.mFaultyFile = kSampleBufferPath;
    mSystem.mWriteFault = EIO;
    EXPECT_EQ(play(10), -1);
    EXPECT_EQ(play(360), 1);
    EXPECT_EQ(mSystem.mSleeps.size(), 1U) << "the countdown had not moved";
    EXPECT_EQ(mDevice.records().size(), 360U);
    EXPECT_EQ(mLog.errors(), 1);
}
} // namespace
