#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "FaultText.h"
#include "Files.h"
#include "LineFit.h"
#include "RateLimit.h"
#include "Seconds.h"

namespace {
constexpr std::int64_t kSecondNs = 1'000'000'000;

sandbox::FaultPlan planOf(const Words& texts)
{
    std::vector<sandbox::Fault> faults;
    for (const std::string& text : texts) {
        faults.push_back(sandbox::parseFault(text));
    }
    return sandbox::FaultPlan(std::move(faults));
}
} // namespace

TEST(FaultsTest, ReadBackAsWritten)
{
    const sandbox::Fault error = sandbox::parseFault("adc-in:100:EIO:3");
    EXPECT_EQ(error.mFile, sandbox::DriverFile::AdcIn);
    EXPECT_EQ(error.mWrite, 100U);
    EXPECT_EQ(error.mError, EIO);
    EXPECT_EQ(error.mLeft, 3U);
    const sandbox::Fault vanish = sandbox::parseFault("r2h:2.5s:vanish:on");
    EXPECT_EQ(vanish.mWrite, 0U);
    EXPECT_EQ(vanish.mDelayNs, 5 * kSecondNs / 2);
    EXPECT_EQ(vanish.mKind, sandbox::FaultKind::Vanish);
    EXPECT_GT(vanish.mLeft, 1'000'000'000'000U);
    EXPECT_EQ(sandbox::parseFault("adc-in:1:short=4800").mBytes, 4800U);
    EXPECT_EQ(sandbox::parseFault("f2h:1:stall=0.25").mStallNs, kSecondNs / 4);
}

/** For each write the index of the fault that it triggers; of several, the first one. */
TEST(FaultsTest, AreTriggeredWriteByWrite)
{
    const struct
    {
        Words mFaults;
        std::string mWrites; ///< 'a' to adc-in, 'f' to f2h, each half a second after the one before
        std::string mMet;    ///< index of the fault, '-' for none
        Words mUnmet;
    } rows[] = {
        {{"adc-in:2:EIO"}, "aaaa", "-0--", {}},
        {{"adc-in:2:EIO:2"}, "afafa", "--0-0", {}},
        {{"adc-in:2:EIO:on", "f2h:2:EIO"}, "afaff", "--01-", {}},
        {{"adc-in:2:EIO:2", "adc-in:3:EIO:2"}, "aaaaaa", "-0011-", {}},
        {{"adc-in:3:EIO", "adc-in:1:EIO:on"}, "aaaa", "1101", {}},
        {{"adc-in:1s:EIO", "r2h:1:EIO"}, "aaaa", "--0-", {"r2h:1:EIO"}},
        {{"f2h:0s:EIO:2"}, "afaf", "-0-0", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.mFaults));
        sandbox::FaultPlan plan = planOf(row.mFaults);
        std::string met;
        std::int64_t elapsedNs = 0;
        for (const char write : row.mWrites) {
            const sandbox::Fault* const fault = plan.countWrite(
                write == 'a' ? sandbox::DriverFile::AdcIn : sandbox::DriverFile::F2h, elapsedNs);
            size_t index = 0;
            while (fault != nullptr && row.mFaults[index] != fault->mText) {
                ++index;
            }
            met += fault == nullptr ? '-' : static_cast<char>('0' + index);
            elapsedNs += kSecondNs / 2;
        }
        EXPECT_EQ(met, row.mMet);
        EXPECT_EQ(plan.unmet(), row.mUnmet);
    }
}

/** Only as long as the next write would trigger it, and not before the first block. */
TEST(FaultsTest, FileVanishesForTheGivenWrites)
{
    sandbox::FaultPlan plan = planOf({"adc-in:2:vanish", "f2h:1s:vanish"});
    const auto adc = sandbox::DriverFile::AdcIn;
    EXPECT_FALSE(plan.isVanished(adc, 0));
    plan.countWrite(adc, 0);
    EXPECT_TRUE(plan.isVanished(adc, 0));
    plan.countWrite(adc, 0);
    EXPECT_FALSE(plan.isVanished(adc, 0));
    EXPECT_FALSE(plan.isVanished(sandbox::DriverFile::F2h, std::nullopt));
    EXPECT_TRUE(plan.isVanished(sandbox::DriverFile::F2h, kSecondNs));
}

TEST(SecondsTest, AreReadToTheNanosecond)
{
    for (const auto& [text, nanoseconds] : {std::pair<const char*, std::int64_t>{"0", 0},
                                            {"0.25", kSecondNs / 4},
                                            {"0.0000000014", 1},
                                            {"1000000000", kSecondNs * kSecondNs}}) {
        EXPECT_EQ(sandbox::parseSeconds("--for", text), nanoseconds) << text;
    }
    for (const char* const text : {"", "1x", " 1", "-1", "1e3", "nan", "inf", "1000000000.1"}) {
        EXPECT_THROW(sandbox::parseSeconds("--for", text), std::runtime_error) << text;
    }
}

/** Far from 0, where plain sums would cancel: ns since the epoch against an error of a few ppm. */
TEST(LineFitTest, KeepsItsSlopeFarFromZero)
{
    sandbox::LineFit fit;
    fit.add(1.7e18, 5.0);
    EXPECT_FALSE(fit.hasSlope());
    for (int i = 1; i <= 1'000'000; ++i) {
        fit.add(1.7e18 + 2e7 * i, 5.0 + 2e7 * i * 3e-6 + (i % 2 == 0 ? 100.0 : -100.0));
    }
    EXPECT_TRUE(fit.hasSlope());
    EXPECT_NEAR(fit.slope(), 3e-6, 1e-10);
}

TEST(RateLimitTest, LetsFivePerSecondThrough)
{
    sandbox::RateLimit limit;
    int allowed = 0;
    for (std::int64_t ns = 10 * kSecondNs; ns < 12 * kSecondNs; ns += kSecondNs / 100) {
        allowed += limit.allows(ns) ? 1 : 0;
    }
    EXPECT_EQ(allowed, 10);
    EXPECT_EQ(limit.takeSuppressed(), 190U);
    EXPECT_EQ(limit.takeSuppressed(), 0U);
}
