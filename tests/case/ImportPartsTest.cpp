#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "importing/CountLimiter.h"
#include "importing/ImportPlan.h"
#include "importing/ImportRemarks.h"

namespace {
constexpr double kMaxCount = std::numeric_limits<qint32>::max();

importing::ChannelMap voltagesAndCurrents()
{
    importing::ChannelMap map;
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        map.mChannels[channel].mText = "S" + std::to_string(channel);
        map.mChannels[channel].mQuantity = channel < importing::kFirstCurrent
                                               ? channels::Quantity::Voltage
                                               : channels::Quantity::Current;
    }
    return map;
}
} // namespace

/** Rounds to the nearest count, and limits values that do not fit. */
TEST(CountLimiterTest, RoundsAndLimitsCounts)
{
    importing::CountLimiter limiter;
    const auto values = limiter.round(
        {1.4, 1.6, -1.6, kMaxCount + 0.4, -kMaxCount - 1.4, 0.0, -0.4, 1e9 + 0.6}, 0.0);
    EXPECT_EQ(values,
              (std::array<qint32, 8>{1, 2, -2, 2147483647, -2147483647 - 1, 0, 0, 1'000'000'001}));
    EXPECT_EQ(limiter.clipped(), 0U);
    const auto clipped = limiter.round(
        {kMaxCount + 0.6, -kMaxCount - 1.6, double(NAN), HUGE_VAL, -HUGE_VAL, 1.0, 1.0, 1.0}, 1.0);
    EXPECT_EQ(clipped[0], 2147483647);
    EXPECT_EQ(clipped[1], -2147483647 - 1);
    EXPECT_EQ(clipped[3], 2147483647);
    EXPECT_EQ(clipped[4], -2147483647 - 1);
    EXPECT_EQ(limiter.clipped(), 5U);
}

/** The first value that did not fit is named; the scale proposed fits and has three digits. */
TEST(CountLimiterTest, ProposesAScaleThatFits)
{
    const struct
    {
        double mVolts; ///< the largest value, in counts
        double mAmperes;
        const char* mExpected;
    } rows[] = {
        {4e9, 1.0,
         "channel 1 (S1) at 0.500000000 s: 4e+09 counts do not fit 32 bits; --scale 536,250 would "
         "fit, --clip limits such values"},
        {2.2e9, -5e10,
         "channel 1 (S1) at 0.500000000 s: 2.2e+09 counts do not fit 32 bits; --scale 715,10.7 "
         "would fit, --clip limits such values"},
        {HUGE_VAL, 1.0,
         "channel 1 (S1) at 0.500000000 s: inf counts do not fit 32 bits; --clip limits such "
         "values"},
    };
    for (const auto& row : rows) {
        importing::CountLimiter limiter;
        limiter.round({}, 0.25);
        limiter.round({0.0, row.mVolts}, 0.5);
        limiter.round({3e9, 0.0, 0.0, 0.0, 0.0, row.mAmperes}, 0.75);
        importing::MappingOptions options;
        options.mCountsPerAmpere = 250.0;
        EXPECT_EQ(limiter.overflowMessage(voltagesAndCurrents(), options), row.mExpected);
    }
}

namespace {
waveform::StatusChannel status(int number, const char* name, std::vector<double> changes,
                               size_t notKept = 0)
{
    waveform::StatusChannel channel;
    channel.mNumber = number;
    channel.mName = name;
    for (const double seconds : changes) {
        channel.mChanges.push_back({seconds, channel.mChanges.size() % 2 == 0});
    }
    channel.mChangeCount = changes.size() + notKept;
    return channel;
}
} // namespace

/** In the order of their first changes in the range; its ends belong to it. */
TEST(ImportRemarksTest, NameChangingStatusChannels)
{
    waveform::SignalDescription description;
    description.mStatusChannels = {
        status(1, "late", {0.1, 0.9}),
        status(2, "", {0.2}),
        status(3, "before", {0.19, 0.21}),
        status(4, "outside", {0.1, 0.91}),
        status(5, "often", {0.3, 0.4, 0.5, 0.6, 0.7}),
        status(6, "four", {0.3, 0.4, 0.5, 0.6}),
        status(7, "more", {0.8}, 7),
    };
    EXPECT_EQ(
        importing::remarksOnStatus(description, {0.2, 0.9}),
        (std::vector<std::string>{
            "status channel 2 is not played: 0→1 at 0.200 s",
            "status channel before is not played: 1→0 at 0.210 s",
            "status channel often is not played: 0→1 at 0.300 s, 1→0 at 0.400 s, 0→1 at 0.500 s, "
            "1→0 at 0.600 s and 1 more",
            "status channel four is not played: 0→1 at 0.300 s, 1→0 at 0.400 s, 0→1 at 0.500 s, "
            "1→0 at 0.600 s",
            "status channel more is not played: 0→1 at 0.800 s and 7 more",
            "status channel late is not played: 1→0 at 0.900 s"}));
    for (const size_t count : {8U, 9U, 11U}) {
        description.mStatusChannels.assign(count, status(1, "x", {0.5}));
        const auto remarks = importing::remarksOnStatus(description, {0.2, 0.9});
        EXPECT_EQ(remarks.back(), count == 8
                                      ? "status channel x is not played: 0→1 at 0.500 s"
                                      : "and " + std::to_string(count - 8) +
                                            " more status channels change, see vx-case info");
    }
}

/** They differ by more than a count and by more than 1 %. */
TEST(ImportRemarksTest, ReportDifferingPeaks)
{
    importing::ImportReport report;
    report.mChannels[0] = {"A", "V", 1000.0, 0.0, 100.0, 101.1};
    report.mChannels[1] = {"B", "V", 1000.0, 0.0, 100.0, 100.9};
    report.mChannels[2] = {"C", "V", 1000.0, 0.0, 0.01, 0.0089};
    report.mChannels[3] = {"D", "V", 1000.0, 0.0, 0.01, 0.0091};
    report.mChannels[4] = {"E", "A", 1000.0, 0.0, 50.0, 40.0};
    EXPECT_EQ(importing::remarksOnPeaks(report),
              (std::vector<std::string>{
                  "peaks written differ from those recorded: channel 0 (A) by +1.1 %, channel 2 "
                  "(C) by -11.0 %, channel 4 (E) by -20.0 %"}));
    EXPECT_TRUE(importing::remarksOnPeaks({}).empty());
}

/** If no fundamental can be followed, its phase is that of the nominal frequency. */
TEST(ImportPlanTest, CountsNominalPeriodsWithoutATrack)
{
    importing::ImportPlan plan;
    plan.mFrom = 0.5;
    plan.mNominalHz = 60.0;
    EXPECT_DOUBLE_EQ(plan.cyclesAt(0.75), 15.0);
    EXPECT_DOUBLE_EQ(plan.cyclesAt(0.45), -3.0);
    EXPECT_DOUBLE_EQ(plan.periodFrom(0.75), 1.0 / 60.0);
    EXPECT_DOUBLE_EQ(plan.periodBefore(0.75), 1.0 / 60.0);
}
