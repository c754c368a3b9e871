#include <gtest/gtest.h>

#include <tuple>

#include "explain/CommandLedger.h"
#include "explain/Hypothesis.h"

/** At the third end of a case, but only after it has waited longer than the longest case. */
TEST(CommandLedgerTest, GivesUpOverdueCommands)
{
    constexpr qint64 kLongestNs = 1'000;
    constexpr qint64 kLateNs = kLongestNs + explain::kWaitToleranceNs + 1;
    const auto command = [](const char* text) {
        return explain::Event{explain::Event::Kind::Command, 0, true, 0, text, "", {}};
    };
    explain::CommandLedger ledger(2, kLongestNs);
    EXPECT_FALSE(ledger.add(command("s1")));
    EXPECT_FALSE(ledger.add(command("0")));
    EXPECT_FALSE(ledger.giveUpOverdue(0, kLateNs));
    EXPECT_FALSE(ledger.giveUpOverdue(0, kLateNs));
    EXPECT_EQ(ledger.giveUpOverdue(0, kLateNs)->mText, "s1");
    for (int poll = 0; poll < 9; ++poll) {
        EXPECT_FALSE(ledger.giveUpOverdue(1, kLateNs - 1));
    }
    EXPECT_FALSE(ledger.giveUpOverdue(2, kLateNs)); // there is none
    EXPECT_EQ(ledger.takeUnreported()->mText, "0");
    EXPECT_FALSE(ledger.takeUnreported());
}

/** Adjacent ranges of repetitions become one. */
TEST(HypothesisTest, AbsorbsNeighbouringRepetitions)
{
    constexpr quint32 kMax = 4'294'967'295;
    using Range = std::pair<quint32, quint32>;
    const struct
    {
        Range mOne;
        Range mOther;
        Range mUnited; ///< of the first, which stays as it is where the two stay apart
    } rows[] = {
        {{1, 2}, {3, 4}, {1, 4}},       {{3, 4}, {1, 2}, {1, 4}}, {{1, 2}, {4, 5}, {1, 2}},
        {{4, 5}, {1, 2}, {4, 5}},       {{1, 9}, {3, 4}, {1, 9}}, {{1, kMax}, {5, 6}, {1, kMax}},
        {{5, 6}, {1, kMax}, {1, kMax}},
    };
    const auto hypothesis = [](const Range& range, int continuous) {
        explain::Hypothesis it;
        std::tie(it.mMinRepetition, it.mMaxRepetition) = range;
        it.mContinuous = explain::ConfigurationSet({continuous});
        return it;
    };
    for (const auto& row : rows) {
        const std::string text = testing::PrintToString(std::pair(row.mOne, row.mOther));
        explain::Hypothesis it = hypothesis(row.mOne, 0);
        EXPECT_FALSE(it.absorb(hypothesis(row.mOther, 1))) << text; // both would be more than each
        it.absorb(hypothesis(row.mOther, 0));
        EXPECT_EQ(Range(it.mMinRepetition, it.mMaxRepetition), row.mUnited) << text;
    }
}

/** Beyond the limit, the newest positions share the last one's origin. */
TEST(OriginsTest, AreBounded)
{
    explain::Origins origins{explain::Origin{}};
    for (size_t i = 1; i < explain::kMaxOrigins + 2; ++i) {
        explain::Origin origin;
        origin.mSamplesBefore = i;
        origins.pushFirst(origin);
    }
    EXPECT_EQ(size_t(origins.all().size()), explain::kMaxOrigins);
    EXPECT_EQ(origins.first().mSamplesBefore, explain::kMaxOrigins - 1);
    EXPECT_EQ(origins.first().mCount, 3U);
    EXPECT_EQ(origins.last().mSamplesBefore, 0U);
    origins.dropLast();
    EXPECT_EQ(origins.last().mSamplesBefore, 1U);
}
