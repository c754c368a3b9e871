#include <random>

#include "WriterFixture.h"

namespace {
/** After its first block, which has paced; the next ten do not. */
class PacingTest : public WriterFixture
{
protected:
    PacingTest()
    {
        startWriter();
        append(mBlock, 360, "50");
        play(1);
        mSystem.mSleeps.clear();
    }

    void playBlock()
    {
        mBlock.resetIterator();
        mWriter->writeSamples(mBlock);
    }

    void playBlocksThatDoNotPace()
    {
        for (int i = 0; i < 10; ++i) {
            play(1);
        }
        EXPECT_TRUE(mSystem.mSleeps.empty());
    }

    qint64 lastStamp() const { return stampOf(mDevice.records().back()); }

    /** Plays a block that paces, with that lead of its last sample; the sleeps it makes. */
    std::vector<qint64> paceWithLead(qint64 nanoseconds)
    {
        playBlocksThatDoNotPace();
        mSystem.mRealtime = fromNanoseconds(lastStamp() + kBlockOf50Hz - nanoseconds);
        playBlock();
        return std::exchange(mSystem.mSleeps, {});
    }

    InputValues mBlock;
};

class FirstPacingTest : public WriterFixture
{
};

TEST_F(FirstPacingTest, FirstBlockAndThenEveryEleventhPaces)
{
    startWriter();
    InputValues block;
    append(block, 360, "50");
    for (int i = 0; i < 34; ++i) {
        const size_t before = mSystem.mSleeps.size();
        block.resetIterator();
        EXPECT_EQ(mWriter->writeSamples(block), 0);
        EXPECT_EQ(mSystem.mSleeps.size() - before, i % 11 == 0 ? 1U : 0U) << i;
    }
    // In whole µs rounded down; what is left over counts in the next one.
    EXPECT_EQ(mSystem.mSleeps,
              (std::vector<qint64>{19'999'000, 219'998'000, 219'998'000, 219'998'000}));
}

TEST_F(FirstPacingTest, InputWithoutItemsDoesNotCount)
{
    startWriter();
    EXPECT_EQ(play(0), 1);
    play(360);
    EXPECT_EQ(mSystem.mSleeps.size(), 1U);
}

TEST_F(FirstPacingTest, CountdownBelongsToTheProcess)
{
    startWriter();
    play(360);
    startWriter();
    for (int i = 0; i < 10; ++i) {
        play(360);
    }
    EXPECT_EQ(mSystem.mSleeps.size(), 1U);
    play(360);
    EXPECT_EQ(mSystem.mSleeps.size(), 2U);
}

TEST_F(PacingTest, SleepsAwayALeadOfMoreThanTwoMilliseconds)
{
    const struct
    {
        qint64 lead;
        std::vector<qint64> sleeps;
        bool adjusted;
    } kCases[] = {
        {0, {}, false},
        {1'500'000, {}, false},
        {2'000'999, {}, false},
        {2'001'000, {2'001'000}, false},
        {2'500'999, {2'500'000}, false},
        {-2'500'000, {}, false},
        {-30 * kSecond, {}, false},
        {-60 * kSecond, {}, false},
        {-61 * kSecond, {}, true},
        {-100'000 * kSecond, {}, true},
        {30 * kSecond, {30 * kSecond}, false},
        {60 * kSecond, {60 * kSecond}, false},
        {61 * kSecond, {61 * kSecond}, true},
        {5000 * kSecond, {5000 * kSecond}, true},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.lead);
        EXPECT_EQ(paceWithLead(row.lead), row.sleeps);
        EXPECT_EQ(mLog.takeLines(), row.adjusted ? Lines{"INFO Zeit angepasst"} : Lines{});
    }
}

TEST_F(PacingTest, SimulatedClockMovesOnlyBeyondAMinute)
{
    for (const qint64 lead : {-60 * kSecond, -61 * kSecond, 60 * kSecond, 61 * kSecond}) {
        paceWithLead(lead);
        const qint64 wallClock = now() - (lead > 0 ? lead : 0); // before the sleep
        const bool adjusted = std::abs(lead) > 60 * kSecond;
        const qint64 simulated = adjusted ? wallClock : lastStamp();
        const std::vector<quint32> r2h = mDevice.words(kR2hPath);
        EXPECT_EQ(toNanoseconds({r2h.at(0), static_cast<long>(r2h.at(1))}), simulated) << lead;
        play(1);
        EXPECT_EQ(lastStamp(), simulated + kStepOf50Hz) << lead;
        for (int i = 0; i < 10; ++i) { // up to the next block that paces
            play(1);
        }
        mSystem.mSleeps.clear();
    }
}

TEST_F(PacingTest, InterruptedSleepIsCompleted)
{
    mSystem.mInterruptSleep = {1'000'000, 500'000};
    EXPECT_EQ(paceWithLead(2'500'000), (std::vector<qint64>{2'500'000, 1'500'000, 1'000'000}));
}

TEST_F(PacingTest, LowFrequencySpansMinutesAndKeepsRunning)
{
    playBlocksThatDoNotPace();
    const qint64 stamp = lastStamp();
    mSystem.mRealtime = fromNanoseconds(stamp);
    InputValues block;
    append(block, 360, "0.02");
    play(block);
    EXPECT_EQ(lastStamp(), stamp + 360 * 138'888'896LL);
    EXPECT_EQ(mSystem.mSleeps, std::vector<qint64>{50'000'002'000}); // one block, under a minute
    mSystem.mSleeps.clear();
    for (int i = 0; i < 11; ++i) {
        play(block);
    }
    ASSERT_EQ(mSystem.mSleeps.size(), 1U);
    EXPECT_NEAR(static_cast<double>(mSystem.mSleeps[0]), 550e9, 1e8);
    EXPECT_EQ(mLog.takeLines(), Lines{"INFO Zeit angepasst"});
}

TEST_F(PacingTest, R2hRecordCarriesTheSimulatedTime)
{
    paceWithLead(5'000'000);
    const qint64 stamp = lastStamp();
    std::vector<quint32> expected{static_cast<quint32>(stamp / kSecond),
                                  static_cast<quint32>(stamp % kSecond), 0, 0};
    expected.insert(expected.end(), 4, 94'578'709);
    expected.insert(expected.end(), 4, 188'918'007);
    EXPECT_EQ(mDevice.words(kR2hPath), expected);
}

TEST_F(PacingTest, F2hRecordCarriesTheLastTenSecondMark)
{
    constexpr quint32 kMark = 1'700'000'010;
    const auto f2h = [this] { return mDevice.words(kF2hPath); };
    EXPECT_EQ(f2h(), (std::vector<quint32>{2'000'000, 0, 0, 0}));

    int blocks = 0;
    while (lastStamp() < kMark * kSecond) {
        EXPECT_EQ(f2h().at(1), 0U);
        playBlock();
        ++blocks;
    }
    EXPECT_GT(blocks, 240);
    qint64 mark = 0;
    for (const SampleRecord& record : mDevice.records()) {
        if (mark == 0 && record.mSeconds == kMark) {
            mark = record.mNanoseconds;
        }
    }
    EXPECT_LT(mark, kStepOf50Hz);
    for (int i = 0; i < 11; ++i) {
        play(360, "60");
    }
    const std::vector<quint32> expected{1'666'666, kMark, static_cast<quint32>(mark), 2'000'000};
    EXPECT_EQ(f2h(), expected);

    // A clock set back passes the same mark again, which is not a new one.
    mSystem.mRealtime = {kMark - 1, 900'000'000};
    startWriter();
    for (int i = 0; i < 22; ++i) {
        playBlock();
    }
    EXPECT_GT(lastStamp(), kMark * kSecond);
    EXPECT_EQ(f2h(), (std::vector<quint32>{2'000'000, 0, 0, 0}));
}

TEST_F(FirstPacingTest, PaceHasNoTrendOverTenMinutes)
{
    constexpr qint64 kLongestOversleep = 3'000'000;
    constexpr qint64 kPacedSpan = 11 * kBlockOf50Hz;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    mDevice.makeLink(kSampleBufferPath, "/dev/null");
    startWriter();
    InputValues block;
    append(block, 360, "50");
    std::vector<qint64> leadsAfterSleep;
    const auto lead = [&] { // of the last sample of the block
        InputValueItem* last = nullptr;
        block.resetIterator();
        while (InputValueItem* item = block.nextItem()) {
            last = item;
        }
        return stampOf(*last) - now();
    };
    mSystem.mOnSleep = [&] { leadsAfterSleep.push_back(lead()); };
    const qint64 start = now();
    for (int i = 0; i < 30'000; ++i) {
        mSystem.mOversleep = static_cast<qint64>(random() % kLongestOversleep);
        mSystem.advance(static_cast<qint64>(random() % 400'000)); // the work for a block
        block.resetIterator();
        ASSERT_EQ(mWriter->writeSamples(block), 0);
        ASSERT_LE(lead(), kPacedSpan + 2'000'999);
        ASSERT_GE(lead(), -kLongestOversleep - 400'000);
    }
    EXPECT_EQ(leadsAfterSleep.size(), 2728U);
    for (const qint64 after : leadsAfterSleep) {
        ASSERT_LE(after, 999);
        ASSERT_GT(after, -kLongestOversleep);
    }
    const qint64 signal = 30'000 * kBlockOf50Hz;
    EXPECT_NEAR(static_cast<double>(now() - start), static_cast<double>(signal), 3e8);
    EXPECT_EQ(mLog.takeLines(), Lines{});
}
} // namespace
