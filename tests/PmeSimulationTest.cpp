#include "PmeSimulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "Records.h"
#include "TestDevice.h"

namespace {
constexpr quint32 kMark = 2;
constexpr size_t kFrameBytes = 56876;
constexpr size_t kFirstRowOffset = 8476;
constexpr size_t kRowBytes = 484;

/** A record that already has a mark, and whether it is to be marked. */
struct Sample
{
    SampleRecord mRecord;
    bool mIsMarked;
};

Sample at(quint32 seconds, quint32 nanoseconds, bool marked = false)
{
    return {SampleRecord{seconds, nanoseconds, 9, 5 | kMark, {1, -2, 3, -4, 5, -6, 7, -8}}, marked};
}

const std::vector<Sample> kSequences[] = {
    // The first record beyond the mark point, whatever its second.
    {at(1, 0), at(1, 5'000'000), at(2, 1'000'000), at(2, 13'000'000, true), at(2, 14'000'000),
     at(2, 15'000'000, true)},
    // The point itself is not beyond it.
    {at(7, 0), at(7, 12345678), at(7, 12345679, true), at(7, 12345680)},
    // The record that starts a second is never marked.
    {at(3, 999'999'999), at(3, 999'999'999, true), at(4, 20'000'000), at(4, 20'000'001, true)},
    // Equal and earlier seconds start nothing.
    {at(5, 0), at(5, 20'000'000, true), at(5, 30'000'000), at(4, 0), at(4, 40'000'000),
     at(0, 50'000'000), at(6, 0), at(6, 12345679, true)},
    // Second 0 is not new.
    {at(0, 0), at(0, 20'000'000), at(0, 999'999'999)},
    // Seconds are unsigned.
    {at(0x80000000, 0), at(0x80000000, 20'000'000, true), at(1, 0), at(1, 20'000'000)}};

class PmeSimulationTest : public testing::Test
{
protected:
    TestDevice mDevice;
    LogCapture mLog;
};

TEST_F(PmeSimulationTest, MarksTheSameRecordsHoweverTheBatchesAreCut)
{
    for (const std::vector<Sample>& sequence : kSequences) {
        for (size_t cut = 0; cut <= sequence.size(); ++cut) {
            PmeSimulation pme;
            std::vector<SampleRecord> records;
            bool marks[2] = {false, false};
            for (const Sample& sample : sequence) {
                marks[records.size() < cut ? 0 : 1] |= sample.mIsMarked;
                records.push_back(sample.mRecord);
            }
            EXPECT_EQ(pme.markRecords(records.data(), static_cast<qint32>(cut)), marks[0]);
            EXPECT_EQ(
                pme.markRecords(records.data() + cut, static_cast<qint32>(records.size() - cut)),
                marks[1]);
            for (size_t i = 0; i < records.size(); ++i) {
                SampleRecord expected = sequence[i].mRecord;
                expected.mFlags = sequence[i].mIsMarked ? 5 | kMark : 5;
                EXPECT_EQ(std::memcmp(&records[i], &expected, sizeof(expected)), 0)
                    << sequence[0].mRecord.mSeconds << " s, cut at " << cut << ", record " << i;
            }
        }
    }
    PmeSimulation pme;
    EXPECT_FALSE(pme.markRecords(nullptr, -1));
}

TEST_F(PmeSimulationTest, WritesOneFramePerMarkedBatch)
{
    writeFile(kPmeDevicePath, "");
    PmeSimulation pme;
    SampleRecord records[] = {at(1, 0).mRecord, at(1, 13'000'000).mRecord, at(2, 0).mRecord,
                              at(2, 20'000'000).mRecord};
    EXPECT_EQ(pme.deviceName(), QString(kPmeDevicePath));
    EXPECT_EQ(pme.processRecords(records, 1), 0);
    EXPECT_EQ(pme.processRecords(records + 1, 3), static_cast<qint32>(kFrameBytes));
    EXPECT_EQ(pme.processRecords(records, 4), 0);
    EXPECT_EQ(mLog.take(), Lines{});

    const std::string frame = readFile(kPmeDevicePath);
    ASSERT_EQ(frame.size(), kFrameBytes);
    EXPECT_EQ(frame.substr(0, kFirstRowOffset), std::string(kFirstRowOffset, '\0'));
    for (size_t row = 0; row < 100; ++row) {
        const auto points =
            itemsOf<float>(frame.substr(kFirstRowOffset + row * kRowBytes, kRowBytes));
        const auto amplitude = static_cast<float>(static_cast<double>(row + 101) * std::sqrt(0.5));
        for (size_t n = 0; n < 120; ++n) {
            const auto degrees = static_cast<long double>(3 * n);
            const long double sine = std::sin(degrees * std::acos(-1.0L) / 180.0L);
            EXPECT_NEAR(points[n], amplitude * static_cast<double>(sine), 2e-5) << row << ' ' << n;
        }
        EXPECT_EQ(points[120], 0.0F);
    }
}

TEST_F(PmeSimulationTest, ReportsAnUnusableDevice)
{
    const auto expectFailure = [this](const Lines& messages, qint32 result) {
        PmeSimulation pme;
        EXPECT_EQ(
            mLog.takeFrom("Configuration source/PmeSimulation.cpp PmeSimulation::PmeSimulation"),
            messages);
        SampleRecord records[] = {at(1, 0).mRecord, at(1, 13'000'000).mRecord};
        EXPECT_EQ(pme.processRecords(records, 2), result);
        EXPECT_EQ(records[1].mFlags, 5 | kMark) << "marked all the same";
        EXPECT_EQ(mLog.take(), Lines{});
    };
    const Lines kMissing{"INFO Pme-Device:/dev/pme-sim not found, no Pme-Simulation"};
    expectFailure(kMissing, 0);
    TestDevice::makeLink(kPmeDevicePath, "/dev/nowhere");
    expectFailure(kMissing, 0);
    EXPECT_FALSE(QFile::exists("/dev/nowhere"));
    TestDevice::makeDirectory(kPmeDevicePath);
    expectFailure({"ERROR coud not open Device:/dev/pme-sim"}, -1);
    TestDevice::makeLink(kPmeDevicePath, "/dev/full");
    expectFailure({}, -1);
}
} // namespace
