#include "PmeSimulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "TestDevice.h"

namespace {
constexpr quint32 kMark = 2;
constexpr size_t kFrameBytes = 56876;
constexpr size_t kFirstRowOffset = 8476;
constexpr size_t kRowBytes = 484;

/** The records of a sequence, each with whether it is to be marked. */
struct MarkCase
{
    const char* mName;
    std::vector<std::pair<SampleRecord, bool>> mRecords;
};

std::pair<SampleRecord, bool> at(quint32 seconds, quint32 nanoseconds, bool marked = false)
{
    return {SampleRecord{seconds, nanoseconds, 9, 5 | kMark, {1, -2, 3, -4, 5, -6, 7, -8}}, marked};
}

const MarkCase kMarkCases[] = {
    {"the first beyond the point, the seconds not looked at",
     {at(1, 0), at(1, 5'000'000), at(2, 1'000'000), at(2, 13'000'000, true), at(2, 14'000'000),
      at(2, 15'000'000, true)}},
    {"the point itself is not beyond it",
     {at(7, 0), at(7, 12345678), at(7, 12345679, true), at(7, 12345680)}},
    {"the record that starts a second is never marked",
     {at(3, 999'999'999), at(3, 999'999'999, true), at(4, 20'000'000), at(4, 20'000'001, true)}},
    {"equal and earlier seconds start nothing",
     {at(5, 0), at(5, 20'000'000, true), at(5, 30'000'000), at(4, 0), at(4, 40'000'000),
      at(0, 50'000'000), at(6, 0), at(6, 12345679, true)}},
    {"second 0 is not new", {at(0, 0), at(0, 20'000'000), at(0, 999'999'999)}},
    {"seconds are unsigned",
     {at(0x80000000, 0), at(0x80000000, 20'000'000, true), at(1, 0), at(1, 20'000'000)}},
};

class PmeSimulationTest : public testing::Test
{
protected:
    /** A simulation without its device, its start-up message taken. */
    static std::unique_ptr<PmeSimulation> withoutDevice()
    {
        LogCapture log;
        return std::make_unique<PmeSimulation>();
    }

    TestDevice mDevice;
};

TEST_F(PmeSimulationTest, MarksTheSameRecordsHoweverTheBatchesAreCut)
{
    for (const MarkCase& markCase : kMarkCases) {
        const auto total = static_cast<qint32>(markCase.mRecords.size());
        for (qint32 cut = 0; cut <= total; ++cut) {
            SCOPED_TRACE(std::string(markCase.mName) + ", cut at " + std::to_string(cut));
            std::vector<SampleRecord> records;
            bool marks[2] = {false, false};
            for (const auto& [record, marked] : markCase.mRecords) {
                marks[static_cast<qint32>(records.size()) < cut ? 0 : 1] |= marked;
                records.push_back(record);
            }
            const auto pme = withoutDevice();
            EXPECT_EQ(pme->markRecords(records.data(), cut), marks[0]);
            EXPECT_EQ(pme->markRecords(records.data() + cut, total - cut), marks[1]);
            for (size_t i = 0; i < records.size(); ++i) {
                SampleRecord expected = markCase.mRecords[i].first;
                expected.mFlags = markCase.mRecords[i].second ? 5 | kMark : 5;
                EXPECT_EQ(std::memcmp(&records[i], &expected, sizeof(expected)), 0)
                    << "record " << i;
            }
        }
    }
}

TEST_F(PmeSimulationTest, TouchesNothingWithoutRecords)
{
    const auto pme = withoutDevice();
    SampleRecord record = at(1, 0).first;
    EXPECT_FALSE(pme->markRecords(&record, 0));
    EXPECT_FALSE(pme->markRecords(&record, -1));
    EXPECT_EQ(pme->processRecords(nullptr, 0), 0);
    EXPECT_EQ(record.mFlags, 5 | kMark);
}

TEST_F(PmeSimulationTest, WritesOneFramePerMarkedBatch)
{
    writeFile(kPmeDevicePath, "");
    LogCapture log;
    PmeSimulation pme;
    SampleRecord records[] = {at(1, 0).first, at(1, 13'000'000).first, at(2, 0).first,
                              at(2, 20'000'000).first};
    EXPECT_EQ(pme.deviceName(), QString(kPmeDevicePath));
    EXPECT_EQ(pme.processRecords(records, 1), 0);
    EXPECT_EQ(pme.processRecords(records + 1, 3), static_cast<qint32>(kFrameBytes));
    EXPECT_EQ(pme.processRecords(records, 4), 0);
    EXPECT_EQ(log.take(), Lines{});

    const std::string frame = readFile(kPmeDevicePath);
    ASSERT_EQ(frame.size(), kFrameBytes);
    EXPECT_EQ(frame.substr(0, kFirstRowOffset), std::string(kFirstRowOffset, '\0'));
    for (size_t row = 0; row < 100; ++row) {
        float points[121];
        std::memcpy(points, frame.data() + kFirstRowOffset + row * kRowBytes, sizeof(points));
        const auto amplitude = static_cast<float>(static_cast<double>(row + 101) * std::sqrt(0.5));
        for (size_t n = 0; n < 120; ++n) {
            const auto degrees = static_cast<long double>(3 * n);
            const long double sine = std::sin(degrees * std::acos(-1.0L) / 180.0L);
            EXPECT_NEAR(points[n], amplitude * static_cast<double>(sine), 2e-5) << row << ' ' << n;
        }
        EXPECT_EQ(points[0], 0.0F);
        EXPECT_EQ(points[30], amplitude);
        EXPECT_EQ(points[60], amplitude * 1.2246469e-16F);
        EXPECT_EQ(points[120], 0.0F);
    }
}

TEST_F(PmeSimulationTest, ReportsADeviceThatDoesNotWork)
{
    const auto markOne = [](PmeSimulation* pme) {
        SampleRecord records[] = {at(1, 0).first, at(1, 13'000'000).first};
        const qint32 result = pme->processRecords(records, 2);
        EXPECT_EQ(records[1].mFlags, 5 | kMark);
        return result;
    };
    TestDevice::remove(kPmeDevicePath);
    LogCapture log;
    {
        PmeSimulation pme;
        EXPECT_EQ(log.mEvents.at(0).mOrigin,
                  "Configuration source/PmeSimulation.cpp PmeSimulation::PmeSimulation");
        EXPECT_EQ(log.take(), Lines{"INFO Pme-Device:/dev/pme-sim not found, no Pme-Simulation"});
        EXPECT_EQ(markOne(&pme), 0);
    }
    TestDevice::makeDirectory(kPmeDevicePath);
    {
        PmeSimulation pme;
        EXPECT_EQ(log.take(), Lines{"ERROR coud not open Device:/dev/pme-sim"});
        EXPECT_EQ(markOne(&pme), -1);
    }
    TestDevice::makeLink(kPmeDevicePath, "/dev/full");
    {
        PmeSimulation pme;
        EXPECT_EQ(markOne(&pme), -1);
        EXPECT_EQ(log.take(), Lines{});
    }
    EXPECT_EQ(log.errors(), 1);
    EXPECT_EQ(log.fatals(), 0);
}
} // namespace
