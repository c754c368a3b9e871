#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "WriterFixture.h"

namespace {
constexpr qint64 kRound = 11 * kBlockOf50Hz; ///< what is played from pacing to pacing
constexpr qint64 kRounding = 1000;           ///< sleeps are in whole µs
constexpr qint64 kDay = 86'400 * kSecond;

/** The wall clock jumps, alone or with the monotonic clock (a suspended process). */
struct ClockFault
{
    const char* mName;
    qint64 mJump;
    bool mIsSuspension;
    int mAdjusted;     ///< how often the simulated clock is set to the wall clock
    qint64 mSilence;   ///< s that the writer sleeps because of the fault
    qint64 mSkipped;   ///< s by which the time stamps jump in all
    int mRoundsBehind; ///< rounds at most until the stream is in step again
};

const ClockFault kFaults[] = {{"Forward10s", 10 * kSecond, false, 0, 0, 0, 50},
                              {"Forward61s", 61 * kSecond, false, 1, 0, 61, 1},
                              {"ForwardADay", kDay, false, 1, 0, 86'400, 1},
                              {"Back10s", -10 * kSecond, false, 0, 10, 0, 1},
                              // The stamps go back, and forward again after the sleep.
                              {"Back61s", -61 * kSecond, false, 2, 61, 0, 2},
                              {"BackADay", -kDay, false, 2, 86'400, 0, 2},
                              {"Suspended5s", 5 * kSecond, true, 0, 0, 0, 30},
                              {"Suspended70s", 70 * kSecond, true, 1, 0, 70, 1}};

void PrintTo(const ClockFault& fault, std::ostream* stream)
{
    *stream << fault.mName;
}

class ClockFaultTest : public WriterFixture, public testing::WithParamInterface<ClockFault>
{
protected:
    /** Plays to the next pacing; the time stamp in the side record, which is the last sample's. */
    qint64 playRound(int blocks = 11)
    {
        for (; blocks > 0; --blocks) {
            mBlock.resetIterator();
            EXPECT_EQ(mWriter->writeSamples(mBlock), 0);
        }
        const std::vector<quint32> words = TestDevice::words(kR2hPath);
        return words.at(0) * kSecond + words.at(1);
    }

    InputValues mBlock = items(360);
};

TEST_P(ClockFaultTest, StreamIsInStepAgainAsTheRulesSay)
{
    const ClockFault& fault = GetParam();
    TestDevice::makeLink(kSampleBufferPath, "/dev/null");
    startWriter();
    qint64 stamp = playRound(1);
    stamp = playRound();
    mLog.take();
    mSystem.mSleeps.clear();

    mSystem.mRealtime = fromNanoseconds(now() + fault.mJump);
    mSystem.mMonotonic = fromNanoseconds(toNanoseconds(mSystem.mMonotonic) +
                                         (fault.mIsSuspension ? fault.mJump : 0));
    const qint64 before = now();
    qint64 skipped = 0;
    qint64 longest = 0; // of a round, for a long sleep takes several calls on a 32-bit target
    int inStepAfter = 0;
    const int kRounds = fault.mRoundsBehind + 10;
    for (int round = 1; round <= kRounds; ++round) {
        const qint64 begin = now();
        const qint64 next = playRound();
        longest = std::max(longest, now() - begin);
        skipped += next - stamp - kRound;
        stamp = next;
        inStepAfter = std::abs(now() - stamp) > kRound ? round : inStepAfter;
    }
    EXPECT_LE(inStepAfter, fault.mRoundsBehind);
    EXPECT_EQ(static_cast<int>(mLog.mEvents.size()), fault.mAdjusted);
    for (const LogEvent& event : mLog.mEvents) {
        EXPECT_EQ(event.mText, "Zeit angepasst");
    }
    EXPECT_LE(std::abs(skipped - fault.mSkipped * kSecond), kRound + kRounding) << skipped;
    EXPECT_EQ(now() - before,
              std::accumulate(mSystem.mSleeps.begin(), mSystem.mSleeps.end(), qint64{0}));
    EXPECT_LE(std::abs(longest - fault.mSilence * kSecond - kRound), kRound) << longest;
    EXPECT_EQ(mWriter->samplesWritten(), 360U * (12 + 11 * static_cast<unsigned>(kRounds)));
}

INSTANTIATE_TEST_SUITE_P(, ClockFaultTest, testing::ValuesIn(kFaults),
                         [](const auto& it) { return std::string(it.param.mName); });

/** A storm of handled signals cuts a sleep into pieces that add up to the same. */
TEST_F(ClockFaultTest, InterruptedSleepIsSleptToItsEnd)
{
    startWriter();
    playRound(1);
    const qint64 before = now();
    mSystem.mInterruptSleep.assign(1000, 200'000);
    playRound();
    EXPECT_EQ(mSystem.mInterruptSleep.size(), 0U);
    EXPECT_LE(std::abs(now() - before - kRound), 1'000'000);
    EXPECT_EQ(mWriter->samplesWritten(), 12 * 360U);
}
} // namespace
