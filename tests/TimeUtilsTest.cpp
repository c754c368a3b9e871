#include "TimeUtils.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>
#include <tuple>

#include "VirtualSystem.h"

namespace {
TEST(TimeUtilsTest, ReadsTheTwoClocks)
{
    const qint64 start = toNanoseconds(TimeUtils::startTime());
    const qint64 age = toNanoseconds(TimeUtils::currentTime()) - start;
    EXPECT_GT(age, 0);
    EXPECT_LT(age, 60'000'000'000);
    VirtualSystem system;
    system.mRealtime = {12, 500};
    system.mMonotonic = {3, 7};
    EXPECT_TRUE(TimeUtils::currentTime() == (timespec{12, 500}));
    EXPECT_TRUE(TimeUtils::monotonicTime() == (timespec{3, 7}));
    EXPECT_EQ(toNanoseconds(TimeUtils::startTime()), start);
}

TEST(TimeUtilsTest, SleepsTheWholeTime)
{
    const std::tuple<quint32, std::deque<qint64>, std::vector<qint64>> kCases[] = {
        {0, {}, {0}},
        {1'500'000'000, {}, {1'500'000'000}},
        {4'294'967'295, {}, {4'294'967'295}},
        {1'500'000'000, {400'000'000, 0}, {1'500'000'000, 1'100'000'000, 1'100'000'000}}};
    for (const auto& [nanoseconds, interruptions, requests] : kCases) {
        VirtualSystem system;
        system.mInterruptSleep = interruptions;
        EXPECT_TRUE(TimeUtils::nanoSleep(nanoseconds));
        EXPECT_EQ(system.mSleeps, requests);
    }
    VirtualSystem system;
    system.mSleepError = EINVAL;
    EXPECT_FALSE(TimeUtils::nanoSleep(5));
    EXPECT_EQ(system.mSleeps.size(), 1U);
}

TEST(TimeUtilsTest, ComparesAndWritesTimes)
{
    EXPECT_TRUE((timespec{1, 2} == timespec{1, 2}));
    EXPECT_FALSE((timespec{1, 2} == timespec{1, 3}));
    EXPECT_FALSE((timespec{1, 2} == timespec{2, 2}));
    std::ostringstream text;
    text << timespec{3, 7} << timespec{-1, 500};
    EXPECT_EQ(text.str(), "3s, 7ns-1s, 500ns");
}
} // namespace
