#include <random>
#include <tuple>

#include "WriterFixture.h"

namespace {
using Times = std::vector<qint64>;

/** The pacing countdown starts with the process, so its first block paces. */
class PacingTest : public WriterFixture
{
protected:
    PacingTest() { startWriter(); }

    void playBlock()
    {
        mBlock.resetIterator();
        ASSERT_EQ(mWriter->writeSamples(mBlock), 0);
    }

    /** Plays a block that paces, with that lead of its last sample; the sleeps it makes. */
    Times paceWithLead(qint64 nanoseconds)
    {
        while (mPacingCountdown-- > 0) {
            play(1);
        }
        mPacingCountdown = 10;
        EXPECT_EQ(mSystem.mSleeps, Times{});
        const qint64 before = mWriter->samplesWritten() == 0 ? now() : lastStamp();
        mSystem.mRealtime = fromNanoseconds(before + kBlockOf50Hz - nanoseconds);
        playBlock();
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
        playBlock();
        EXPECT_EQ(mSystem.mSleeps.size() - before, i % 11 == 0 ? 1U : 0U) << i;
    }
    // In whole µs rounded down; what is left over counts in the next one.
    EXPECT_EQ(mSystem.mSleeps, (Times{19'999'000, 219'998'000, 219'998'000, 219'998'000}));
}

TEST_F(PacingTest, SleepsAwayTheLeadAndGivesUpTheClockBeyondAMinute)
{
    const Times kMoreThan32BitsOfMicroseconds =
        sizeof(long) == 4 ? Times{4'294'967'295'000, 705'032'705'000} : Times{5000 * kSecond};
    const std::tuple<qint64, Times, bool> kCases[] = {
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

TEST_F(PacingTest, F2hRecordCarriesTheLastTenSecondMark)
{
    constexpr quint32 kMark = 1'700'000'010;
    const auto f2h = [] { return TestDevice::words(kF2hPath); };
    mSystem.mRealtime = {kMark - 1, 700'000'000};
    startWriter();
    playBlock();
    EXPECT_EQ(f2h(), (std::vector<quint32>{2'000'000, 0, 0, 0}));
    while (lastStamp() < kMark * kSecond) {
        playBlock();
    }
    quint32 mark = 0;
    for (const SampleRecord& record : TestDevice::records()) {
        mark = record.mSeconds == kMark && mark == 0 ? record.mNanoseconds : mark;
    }
    EXPECT_LT(mark, kStepOf50Hz);
    InputValues at60Hz = items(2, "60");
    for (int i = 0; i < 11; ++i) {
        play(at60Hz);
    }
    EXPECT_EQ(f2h(), (std::vector<quint32>{1'666'666, kMark, mark, 2'000'000}));

    // A clock set back passes the same mark again, which is not a new one.
    mSystem.mRealtime = {kMark - 1, 900'000'000};
    startWriter();
    for (int i = 0; i < 22; ++i) {
        playBlock();
    }
    EXPECT_GT(lastStamp(), kMark * kSecond);
    EXPECT_EQ(f2h(), (std::vector<quint32>{2'000'000, 0, 0, 0}));
}

TEST_F(PacingTest, PaceHasNoTrendOverTenMinutes)
{
    constexpr qint64 kLongestOversleep = 3'000'000;
    constexpr qint64 kLongestWork = 400'000;
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto upTo = [&random](qint64 most) { return static_cast<qint64>(random()) % most; };
    TestDevice::makeLink(kSampleBufferPath, "/dev/null");
    startWriter();
    const qint64 start = now();
    qint64 signal = start;
    mSystem.mOnSleep = [&] {
        const qint64 lead = signal + kBlockOf50Hz - now(); // the block that sleeps has its samples
        ASSERT_LE(lead, 999);
        ASSERT_GT(lead, -kLongestOversleep);
    };
    for (int i = 0; i < 30'000; ++i) {
        mSystem.mOversleep = upTo(kLongestOversleep);
        mSystem.advance(upTo(kLongestWork));
        playBlock();
        signal += kBlockOf50Hz;
        ASSERT_LE(signal - now(), 11 * kBlockOf50Hz);
        ASSERT_GE(signal - now(), -kLongestOversleep - kLongestWork);
    }
    EXPECT_EQ(mSystem.mSleeps.size(), 2728U);
    EXPECT_EQ(mLog.take(), Lines{});
}
} // namespace
