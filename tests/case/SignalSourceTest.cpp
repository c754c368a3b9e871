#include <gmock/gmock.h>

#include "Files.h"
#include "ReadSignal.h"
#include "SampleRecord.h"
#include "waveform/DriverRecordingSource.h"
#include "waveform/ValueFileSource.h"

using testing::ElementsAre;

namespace {
std::string bytesOf(const std::vector<SampleRecord>& records)
{
    return {reinterpret_cast<const char*>(records.data()), records.size() * sizeof(SampleRecord)};
}
} // namespace

/** The step changes with the block, not with the line; unplayable frequencies change nothing. */
TEST(SignalSourceTest, ValueFileHasTheTimesOfTheSimulator)
{
    const TestFiles files;
    const std::string text = "# comment\n" + repeated(valueLine("7", "50"), 300) + "\n" +
                             repeated(valueLine("7", "60"), 2 * 360 - 300) +
                             repeated(valueLine("7", "0"), 9000);
    waveform::ValueFileSource source(files.make("case.csv", text).toStdString());
    const waveform::SignalBlock all = readAll(source);
    ASSERT_EQ(all.size(), 9720);
    EXPECT_DOUBLE_EQ(all.mSeconds[0], 0);
    EXPECT_DOUBLE_EQ(all.mSeconds[359], 359 * 55555e-9);
    EXPECT_DOUBLE_EQ(all.mSeconds[719], 359 * 55555e-9 + 360 * 46296e-9);
    EXPECT_DOUBLE_EQ(all.mSeconds[9719], 359 * 55555e-9 + 9360 * 46296e-9);
    EXPECT_EQ(all.mFrequency[299], 50);
    EXPECT_EQ(all.mFrequency[9719], 0);
    EXPECT_EQ(all.mValues[7][9719], 8);
    EXPECT_EQ(source.description().mNominalHz, 50);
}

TEST(SignalSourceTest, ValueFileIsRejectedWithTheProgramsMessage)
{
    const TestFiles files;
    const std::string name =
        files.make("bad.csv", repeated(valueLine("7", "50"), 5000) + ";;1;2;50;1;2;3;4;5;6;7;x")
            .toStdString();
    waveform::ValueFileSource source(name);
    EXPECT_EQ(errorOf([&] { readAll(source); }),
              name + ":5001: Parameter (x) is not of type qint32");
    EXPECT_THROW(waveform::ValueFileSource("/no/such"), base::CaseError);
    waveform::ValueFileSource removed(
        files.make("gone", repeated(valueLine("7", "50"), 9000)).toStdString());
    waveform::SignalBlock block;
    EXPECT_TRUE(removed.read(block));
    QFile::remove(files.path("gone").c_str());
    EXPECT_EQ(errorOf([&] { removed.read(block); }),
              files.path("gone") + ": was removed while it was read");
}

TEST(SignalSourceTest, DriverRecordingHasTheTimesOfItsStamps)
{
    const TestFiles files;
    std::vector<SampleRecord> records(5000);
    for (size_t i = 0; i < records.size(); ++i) {
        records[i].mSeconds = 1'700'000'000 + static_cast<quint32>(i / 2);
        records[i].mNanoseconds = i % 2 == 0 ? 999'999'998 - 500'000'000 : 999'999'999;
        records[i].mValues[7] = -static_cast<qint32>(i);
    }
    records[4998].mSeconds = 5; // a step back: the last step is repeated
    records[4999].mSeconds = 5;
    waveform::DriverRecordingSource source(
        files.make("record", bytesOf(records) + "rest").toStdString());
    const waveform::SignalBlock all = readAll(source);
    ASSERT_EQ(all.size(), 5000);
    EXPECT_EQ(source.description().mStartTime, "2023-11-14 22:13:20.499999998 UTC");
    EXPECT_NEAR(all.mSeconds[1], 0.500000001, 1e-15);
    EXPECT_NEAR(all.mSeconds[4997], 2498.500000001, 1e-12);
    EXPECT_NEAR(all.mSeconds[4998], 2499.000000002, 1e-12);
    EXPECT_NEAR(all.mSeconds[4999], 2499.500000003, 1e-12);
    EXPECT_EQ(all.mValues[7][4999], -4999);
    EXPECT_THAT(source.description().mRemarks,
                ElementsAre("1 time stamps fall: the step before them is repeated",
                            "4 bytes at the end are no whole record: left out"));
}

/** A single byte is left out, too, and reported. */
TEST(SignalSourceTest, IncompleteRecordIsReported)
{
    const TestFiles files;
    const std::vector<SampleRecord> records(2, {7, 0, 0, 0, {}});
    for (const size_t rest : {0U, 1U, 47U}) {
        waveform::DriverRecordingSource source(
            files.make("record", bytesOf(records) + std::string(rest, 'x')).toStdString());
        EXPECT_EQ(readAll(source).size(), 2U);
        std::string remarks;
        for (const std::string& remark : source.description().mRemarks) {
            remarks += remark + "|";
        }
        const std::string expected =
            std::to_string(rest) + " bytes at the end are no whole record: left out";
        EXPECT_EQ(remarks.find(expected) != std::string::npos, rest > 0) << remarks;
    }
}
