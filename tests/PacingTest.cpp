#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <tuple>

#include "AllocationCounter.h"
#include "WriterFixture.h"

namespace {
using Times = std::vector<qint64>;

constexpr qint64 kRound = 11 * kBlockOf50Hz; ///< what is played from pacing to pacing
constexpr qint64 kDay = 86'400 * kSecond;

/** The pacing countdown starts with the process, so the first block is paced. */
class PacingTest : public WriterFixture
{
protected:
    PacingTest() { startWriter(); }

    void playBlocks(int count = 1)
    {
        for (; count > 0; --count) {
            mBlock.resetIterator();
            ASSERT_EQ(mWriter->writeSamples(mBlock), 0);
        }
    }

    /**
     * Plays to the next pacing; returns the time stamp in the side record, that of the last sample.
     */
    qint64 playRound()
    {
        playBlocks(11);
        const std::vector<quint32> words = TestDevice::words(kR2hPath);
        return words.at(0) * kSecond + words.at(1);
    }

    /** Plays a paced block with this lead of its last sample; returns its sleeps. */
    Times paceWithLead(qint64 nanoseconds)
    {
        while (mPacingCountdown-- > 0) {
            play(1);
        }
        mPacingCountdown = 10;
        EXPECT_EQ(mSystem.mSleeps, Times{});
        const qint64 before = mWriter->samplesWritten() == 0 ? now() : lastStamp();
        mSystem.mRealtime = fromNanoseconds(before + kBlockOf50Hz - nanoseconds);
        playBlocks();
        return std::exchange(mSystem.mSleeps, {});
    }

    InputValues mBlock = items(360);
    int mPacingCountdown = 0;
};

TEST_F(PacingTest, FirstBlockAndThenEveryEleventhPaces)
{
    EXPECT_EQ(play(0), 1) << "no block, so it does not count";
    for (int i = 0; i < 34; ++i) {
        const size_t before = mSystem.mSleeps.size();
        playBlocks();
        EXPECT_EQ(mSystem.mSleeps.size() - before, i % 11 == 0 ? 1U : 0U) << i;
    }
    // In whole µs, rounded down; the rest counts in the next sleep.
    EXPECT_EQ(mSystem.mSleeps, (Times{19'999'000, 219'998'000, 219'998'000, 219'998'000}));
}

TEST_F(PacingTest, SleepsForTheLeadAndResetsTheClockBeyondAMinute)
{
    const Times kMoreThan32BitsOfMicroseconds =
        sizeof(long) == 4 ? Times{4'294'967'295'000, 705'032'705'000} : Times{5000 * kSecond};
    const std::tuple<qint64, Times, bool> kCases[] = {
        {0, {}, false},
        {2'000'999, {}, false},
        {2'001'000, {2'001'000}, false},
        {2'500'999, {2'500'000}, false},
        {-60 * kSecond, {}, false},
        {-61 * kSecond, {}, true},
        {60 * kSecond, {60 * kSecond}, false},
        {61 * kSecond, {61 * kSecond}, true},
        {5000 * kSecond, kMoreThan32BitsOfMicroseconds, true}};
    for (const auto& [lead, sleeps, adjusted] : kCases) {
        SCOPED_TRACE(lead);
        EXPECT_EQ(paceWithLead(lead), sleeps);
        EXPECT_EQ(mLog.take(), adjusted ? Lines{"INFO Zeit angepasst"} : Lines{});
        const qint64 wallClock = lastStamp() - lead; // before the sleep
        const qint64 simulated = adjusted ? wallClock : lastStamp();
        std::vector<quint32> r2h{static_cast<quint32>(simulated / kSecond),
                                 static_cast<quint32>(simulated % kSecond), 0, 0};
        r2h.insert(r2h.end(), 4, 94'578'709);
        r2h.insert(r2h.end(), 4, 188'918'007);
        EXPECT_EQ(TestDevice::words(kR2hPath), r2h);
        play(1);
        --mPacingCountdown;
        EXPECT_EQ(lastStamp(), simulated + kStepOf50Hz);
    }
}

TEST_F(PacingTest, StreamIsInStepAgainAfterAClockJump)
{
    struct Jump
    {
        qint64 mJump;
        size_t mAdjusted; ///< how often the simulated clock is set to the wall clock
        qint64 mSilence;  ///< that the writer sleeps because of the jump
        int mRounds;      ///< at most until the stream is in step again
    };
    playBlocks();
    for (const Jump& it :
         {Jump{10 * kSecond, 0, 0, 50}, Jump{kDay, 1, 0, 1},
          // It waits for the wall clock; beyond a minute the stamps jump back, and forward again.
          Jump{-10 * kSecond, 0, 10 * kSecond, 1}, Jump{-61 * kSecond, 2, 61 * kSecond, 2},
          Jump{-kDay, 2, kDay, 2}}) {
        SCOPED_TRACE(it.mJump);
        playRound();
        mSystem.mRealtime = fromNanoseconds(now() + it.mJump);
        qint64 longest = 0; // of a round, for a long sleep takes several calls on a 32-bit target
        for (int round = 1; round <= it.mRounds + 3; ++round) {
            const qint64 begin = now();
            const qint64 stamp = playRound();
            longest = std::max(longest, now() - begin);
            EXPECT_TRUE(round <= it.mRounds || std::abs(now() - stamp) <= kRound) << round;
        }
        EXPECT_EQ(mLog.take(), Lines(it.mAdjusted, "INFO Zeit angepasst"));
        EXPECT_LE(std::abs(longest - it.mSilence - kRound), kRound) << longest;
    }
}

/** The seconds of the records are unsigned, so the stream is in order up to 2106. */
TEST_F(PacingTest, PlaysAcrossTheEndOf32BitTime)
{
    constexpr quint32 kEnd = 0x8000'0000; // 2038-01-19 03:14:08 UTC
    mSystem.mRealtime = {qint64{kEnd} - 1, 0};
    startWriter();
    qint64 stamp = now();
    playBlocks(11 * 20);
    for (const SampleRecord& record : TestDevice::records()) {
        ASSERT_EQ(stampOf(record), stamp += kStepOf50Hz);
    }
    EXPECT_GT(stamp, (qint64{kEnd} + 2) * kSecond);
    EXPECT_LE(std::abs(now() - stamp), kRound);
    EXPECT_EQ(mLog.take(), Lines{}) << "the clock is not adjusted";
    EXPECT_GE(TestDevice::words(kR2hPath).at(0), kEnd + 2);
    EXPECT_EQ(TestDevice::words(kF2hPath).at(1), kEnd + 2) << "a multiple of ten seconds";
}

TEST_F(PacingTest, UnreadableWallClockIsReportedOnceAndPacingContinues)
{
    playRound();
    for (const int error : {EOVERFLOW, 0, EPERM}) {
        mSystem.mClockError = error;
        mSystem.mSleeps.clear();
        for (int round = 0; round < 5; ++round) {
            playRound();
        }
        for (const qint64 sleep : mSystem.mSleeps) {
            EXPECT_LE(std::abs(sleep - kRound), 1'000'000) << error;
        }
        EXPECT_EQ(mSystem.mSleeps.size(), 5U);
        const Lines message{"ERROR wall clock cannot be read, paced by the samples alone: " +
                            std::string(std::strerror(error))};
        EXPECT_EQ(mLog.take(), error == 0 ? Lines{} : message);
    }
}

/** A storm of handled signals cuts a sleep into pieces that add up to the same. */
TEST_F(PacingTest, InterruptedSleepIsSleptToItsEnd)
{
    playBlocks();
    const qint64 before = now();
    mSystem.mInterruptSleep.assign(1000, 200'000);
    playRound();
    EXPECT_EQ(mSystem.mInterruptSleep.size(), 0U);
    EXPECT_LE(std::abs(now() - before - kRound), 1'000'000);
}

TEST_F(PacingTest, F2hRecordCarriesTheLastTenSecondMark)
{
    constexpr quint32 kMark = 1'700'000'010;
    const auto f2h = [] { return TestDevice::words(kF2hPath); };
    mSystem.mRealtime = {kMark - 1, 999'900'000};
    startWriter();
    play(1, "55.55555"); // a step of 50,000 ns
    EXPECT_EQ(f2h(), (std::vector<quint32>{1'800'000, 0, 0, 0}));
    play(1, "55.55555");
    EXPECT_EQ(lastStamp(), kMark * kSecond) << "reaches the second exactly";
    for (int i = 0; i < 10; ++i) {
        play(2, "60");
    }
    EXPECT_EQ(f2h(), (std::vector<quint32>{1'666'666, kMark, 0, 1'800'000}));

    // A clock that was set back passes the same mark again; that is not a new one.
    mSystem.mRealtime = {kMark - 1, 900'000'000};
    startWriter();
    playBlocks(22);
    EXPECT_GT(lastStamp(), kMark * kSecond);
    EXPECT_EQ(f2h(), (std::vector<quint32>{2'000'000, 0, 0, 0}));
}

/** Steps, sleeps, 10-second marks and side records included: 22 s of play from one heap. */
TEST_F(PacingTest, PlayingAllocatesNothing)
{
    constexpr int kRounds = 100;
    mSystem.mSleeps.reserve(kRounds + 1);
    playBlocks();
    const size_t before = allocationsSoFar();
    playBlocks(11 * kRounds);
    EXPECT_EQ(allocationsSoFar(), before);
    EXPECT_EQ(before > 0, kCountsAllocations);
    EXPECT_EQ(mSystem.mSleeps.size(), kRounds + 1U);
}
} // namespace
