#include "TimeUtils.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iomanip>
#include <sstream>
#include <tuple>

#include "VirtualSystem.h"

namespace {
TEST(TimeUtilsTest, ReadsWritesAndComparesTheTwoClocks)
{
    const qint64 age =
        toNanoseconds(TimeUtils::currentTime()) - toNanoseconds(TimeUtils::startTime());
    EXPECT_GT(age, 0);
    EXPECT_LT(age, 3'600'000'000'000);
    VirtualSystem system;
    system.mRealtime = {-1, 500};
    system.mMonotonic = {3, 7};
    std::ostringstream text;
    text << std::hex << std::showpos << std::setfill('*') << std::setw(20)
         << TimeUtils::monotonicTime() << TimeUtils::currentTime() << 10;
    EXPECT_EQ(text.str(), "3s, 7ns-1s, 500ns*******************a") << "what was set is left";
    EXPECT_TRUE((timespec{1, 2} == timespec{1, 2}));
    EXPECT_FALSE((timespec{1, 2} == timespec{1, 3}));
    EXPECT_FALSE((timespec{1, 2} == timespec{2, 2}));
}

TEST(TimeUtilsTest, SleepsTheWholeTime)
{
    const std::tuple<quint32, std::deque<qint64>, std::vector<qint64>> kSleeps[] = {
        {0, {}, {0}},
        {4'294'967'295, {}, {4'294'967'295}},
        {1'500'000'000, {400'000'000, 0}, {1'500'000'000, 1'100'000'000, 1'100'000'000}}};
    for (const auto& [nanoseconds, interruptions, requests] : kSleeps) {
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

} // namespace
