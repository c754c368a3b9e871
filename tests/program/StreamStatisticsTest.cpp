#include "StreamStatistics.h"

#include <gmock/gmock.h>

#include <functional>
#include <vector>

#include "SampleRecord.h"
#include "Summary.h"

namespace {
using testing::EndsWith;

constexpr std::int64_t kStartNs = 1'700'000'000'000'000'000;
constexpr std::int64_t kStepNs = 55'555;
constexpr std::size_t kBlockSamples = 360;
constexpr std::int64_t kBlockNs = kStepNs * std::int64_t{kBlockSamples};
constexpr int kBlocksOfABurst = 11;
constexpr std::int64_t kBurstNs = kBlocksOfABurst * kBlockNs;

/** A stream of consecutive samples; the test chooses the arrivals. */
struct Stream
{
    void add(std::size_t count, std::int64_t stepNs, const sandbox::Arrival& arrival)
    {
        std::vector<SampleRecord> records(count);
        for (SampleRecord& record : records) {
            mStampNs += stepNs;
            record.mSeconds = static_cast<quint32>(mStampNs / sandbox::kNanosecondsPerSecond);
            record.mNanoseconds = static_cast<quint32>(mStampNs % sandbox::kNanosecondsPerSecond);
        }
        mStatistics.addBlock(records.data(), records.size(), arrival);
    }

    /** Bursts of eleven blocks; `arrivalNs` tells when each arrives after the start. */
    void addBursts(int count, std::int64_t stepNs,
                   const std::function<std::int64_t(int burst)>& arrivalNs)
    {
        for (int burst = 0; burst < count; ++burst) {
            const std::int64_t atNs = arrivalNs(burst);
            for (int block = 0; block < kBlocksOfABurst; ++block) {
                add(kBlockSamples, stepNs, {kStartNs + atNs, atNs});
            }
        }
    }

    std::int64_t mStampNs = kStartNs;
    sandbox::StreamStatistics mStatistics;
};
} // namespace

TEST(StreamStatisticsTest, StepsCountWithinAndAcrossBlocks)
{
    struct Block
    {
        std::size_t mCount;
        std::int64_t mStepNs;
        std::int64_t mMinNs; ///< of all steps so far
        std::int64_t mMaxNs;
    };
    Stream stream;
    const sandbox::StreamStatistics& statistics = stream.mStatistics;
    EXPECT_EQ(statistics.samplingRate(), 0);
    stream.add(1, kStepNs, {kStartNs + 7, 1234});
    EXPECT_EQ(statistics.samplingRate(), 0);
    EXPECT_EQ(statistics.arrivalRate(), 0);
    for (const Block& it : {Block{2, 1000, 1000, 1000}, Block{1, 5000, 1000, 5000},
                            Block{1, 0, 0, 5000}, Block{2, -3500, -3500, 5000}}) {
        stream.add(it.mCount, it.mStepNs, {kStartNs + 100, 1334});
        EXPECT_EQ(statistics.minStepNs(), it.mMinNs);
        EXPECT_EQ(statistics.maxStepNs(), it.mMaxNs);
    }
    EXPECT_EQ(statistics.blocks(), 5U);
    EXPECT_EQ(statistics.samples(), 7U);
    EXPECT_EQ(statistics.firstStampNs(), kStartNs + kStepNs);
    EXPECT_EQ(statistics.signalNs(), 0);
    EXPECT_EQ(statistics.firstArrival().mRealtimeNs, kStartNs + 7);
    EXPECT_EQ(statistics.samplingRate(), 0);
}

/** All bursts have the same shape, so the slope is exactly the speed of the bursts. */
TEST(StreamStatisticsTest, SpeedIsThatOfTheBursts)
{
    for (const auto& [bursts, lateNs] :
         {std::pair(2, 0), std::pair(100, 22'000), std::pair(1000, -220'000)}) {
        Stream stream;
        const std::int64_t burstNs = kBurstNs + lateNs;
        stream.addBursts(bursts, kStepNs, [&](int burst) { return burst * burstNs; });
        EXPECT_NEAR(stream.mStatistics.samplingRate(), 1e9 / kStepNs, 1e-6);
        EXPECT_NEAR(stream.mStatistics.playbackSpeed(),
                    static_cast<double>(kBurstNs) / static_cast<double>(burstNs), 1e-9);
    }
}

/** At 60 Hz, bursts are shorter, which must not look like a slower stream. */
TEST(StreamStatisticsTest, ShorterBurstsDoNotChangeTheSpeed)
{
    Stream stream;
    const auto inStep = [&stream](int) { return stream.mStampNs - kStartNs; };
    stream.addBursts(20, kStepNs, inStep);
    stream.addBursts(20, 46'296, inStep);
    EXPECT_NEAR(stream.mStatistics.playbackSpeed(), 1, 1e-12);
}

TEST(StreamStatisticsTest, SettingTheWallClockDoesNotChangeTheSpeed)
{
    Stream stream;
    for (int block = 0; block < 10; ++block) {
        const std::int64_t setNs = block < 5 ? 0 : 3600 * sandbox::kNanosecondsPerSecond;
        stream.add(kBlockSamples, kStepNs,
                   {kStartNs + block * kBlockNs + setNs, 77 + block * kBlockNs});
    }
    EXPECT_NEAR(stream.mStatistics.playbackSpeed(), 1, 1e-12);
}

TEST(StreamStatisticsTest, EveryBlockHasALeadOrALag)
{
    Stream stream;
    for (const std::int64_t leadNs : {30, 20, 10, 0, -5, -100}) {
        stream.add(kBlockSamples, kStepNs, {stream.mStampNs + kBlockNs - leadNs, 0});
    }
    const sandbox::Histogram& lead = stream.mStatistics.leadNs();
    const sandbox::Histogram& lag = stream.mStatistics.lagNs();
    EXPECT_EQ(lead.count(), 6U);
    EXPECT_EQ(lead.max(), 30U);
    EXPECT_EQ(lead.percentile(66), 10U);
    EXPECT_EQ(lag.count(), 6U);
    EXPECT_EQ(lag.max(), 100U);
    EXPECT_EQ(lag.percentile(50), 0U);
    EXPECT_EQ(lag.percentile(83), 5U);
    const std::int64_t lastNs = stream.mStampNs;
    EXPECT_THAT(sandbox::statusText(stream.mStatistics, {lastNs - 2'000'000, 0}),
                EndsWith("  lead 2.0 ms"));
    EXPECT_THAT(sandbox::statusText(stream.mStatistics, {lastNs + 3'000'000, 0}),
                EndsWith("  lag 3.0 ms"));
}
