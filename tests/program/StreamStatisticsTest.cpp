#include "StreamStatistics.h"

#include <gmock/gmock.h>

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

SampleRecord stamped(std::int64_t stampNs)
{
    SampleRecord record{};
    record.mSeconds = static_cast<quint32>(stampNs / kNanosecondsPerSecond);
    record.mNanoseconds = static_cast<quint32>(stampNs % kNanosecondsPerSecond);
    return record;
}

/** A stream whose samples follow each other, with arrivals as the test wants them. */
class Stream
{
public:
    void add(std::size_t count, std::int64_t stepNs, const Arrival& arrival)
    {
        std::vector<SampleRecord> records;
        for (std::size_t sample = 0; sample < count; ++sample) {
            mStampNs += stepNs;
            records.push_back(stamped(mStampNs));
        }
        mStatistics.addBlock(records.data(), records.size(), arrival);
    }

    /** A burst of eleven blocks, which arrive together that long after the start. */
    void addBurst(std::int64_t stepNs, std::int64_t arrivalNs)
    {
        for (int block = 0; block < kBlocksOfABurst; ++block) {
            add(kBlockSamples, stepNs, {kStartNs + arrivalNs, arrivalNs});
        }
    }

    std::int64_t stampNs() const { return mStampNs; }
    const StreamStatistics& statistics() const { return mStatistics; }

private:
    std::int64_t mStampNs = kStartNs;
    StreamStatistics mStatistics;
};
} // namespace

TEST(StreamStatisticsTest, StepsCountWithinAndAcrossBlocks)
{
    struct Block
    {
        std::size_t mCount;
        std::int64_t mStepNs;
        std::int64_t mSmallestNs; ///< of all steps so far
        std::int64_t mLargestNs;
    };
    Stream stream;
    const StreamStatistics& statistics = stream.statistics();
    EXPECT_EQ(statistics.stepRate(), 0);
    stream.add(1, kStepNs, {kStartNs + 7, 1234});
    EXPECT_EQ(statistics.stepRate(), 0);
    EXPECT_EQ(statistics.arrivalRate(), 0);
    for (const Block& it : {Block{2, 1000, 1000, 1000}, Block{1, 5000, 1000, 5000},
                            Block{1, 0, 0, 5000}, Block{2, -3500, -3500, 5000}}) {
        stream.add(it.mCount, it.mStepNs, {kStartNs + 100, 1334});
        EXPECT_EQ(statistics.smallestStepNs(), it.mSmallestNs);
        EXPECT_EQ(statistics.largestStepNs(), it.mLargestNs);
    }
    EXPECT_EQ(statistics.blocks(), 5U);
    EXPECT_EQ(statistics.samples(), 7U);
    EXPECT_EQ(statistics.firstStampNs(), kStartNs + kStepNs);
    EXPECT_EQ(statistics.signalNs(), 0);
    EXPECT_EQ(statistics.firstArrival().mRealtimeNs, kStartNs + 7);
    EXPECT_EQ(statistics.stepRate(), 0);
}

/** Every burst has the same shape, so the line through them has exactly the pace of the bursts. */
TEST(StreamStatisticsTest, SpeedIsThatOfTheBursts)
{
    struct Case
    {
        int mBursts;
        std::int64_t mExtraNs; ///< what each burst comes later than its signal time allows
    };
    for (const Case& it : {Case{2, 0}, Case{100, 22'000}, Case{1000, -220'000}}) {
        Stream stream;
        const std::int64_t burstNs = kBlocksOfABurst * kBlockNs + it.mExtraNs;
        for (int burst = 0; burst < it.mBursts; ++burst) {
            stream.addBurst(kStepNs, burst * burstNs);
        }
        const double expected =
            static_cast<double>(kBlocksOfABurst * kBlockNs) / static_cast<double>(burstNs);
        EXPECT_NEAR(stream.statistics().stepRate(), 1e9 / kStepNs, 1e-6);
        EXPECT_NEAR(stream.statistics().signalSpeed(), expected, 1e-9);
    }
}

/** A period of 60 Hz has shorter bursts; that must not look like a slower stream. */
TEST(StreamStatisticsTest, ShorterBurstsDoNotChangeTheSpeed)
{
    Stream stream;
    for (int burst = 0; burst < 40; ++burst) {
        stream.addBurst(burst < 20 ? kStepNs : 46'296, stream.stampNs() - kStartNs);
    }
    EXPECT_NEAR(stream.statistics().signalSpeed(), 1, 1e-12);
}

TEST(StreamStatisticsTest, SettingTheWallClockDoesNotChangeTheSpeed)
{
    Stream stream;
    for (int block = 0; block < 10; ++block) {
        const std::int64_t setNs = block < 5 ? 0 : 3600 * kNanosecondsPerSecond;
        stream.add(kBlockSamples, kStepNs,
                   {kStartNs + block * kBlockNs + setNs, 77 + block * kBlockNs});
    }
    EXPECT_NEAR(stream.statistics().signalSpeed(), 1, 1e-12);
}

TEST(StreamStatisticsTest, EveryBlockHasALeadOrALag)
{
    Stream stream;
    for (const std::int64_t leadNs : {30, 20, 10, 0, -5, -100}) {
        stream.add(kBlockSamples, kStepNs, {stream.stampNs() + kBlockNs - leadNs, 0});
    }
    const Histogram& lead = stream.statistics().leadNs();
    const Histogram& lag = stream.statistics().lagNs();
    EXPECT_EQ(lead.count(), 6U);
    EXPECT_EQ(lead.largest(), 30U);
    EXPECT_EQ(lead.percentile(66), 10U);
    EXPECT_EQ(lag.count(), 6U);
    EXPECT_EQ(lag.largest(), 100U);
    EXPECT_EQ(lag.percentile(50), 0U);
    EXPECT_EQ(lag.percentile(83), 5U);
    const std::int64_t lastNs = stream.stampNs();
    EXPECT_THAT(statusText(stream.statistics(), {lastNs - 2'000'000, 0}),
                EndsWith("  lead 2.0 ms"));
    EXPECT_THAT(statusText(stream.statistics(), {lastNs + 3'000'000, 0}), EndsWith("  lag 3.0 ms"));
}
