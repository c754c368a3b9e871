#include <gtest/gtest.h>

#include <utility>

#include "NightFixture.h"
#include "run/DeviceNight.h"

using journal::NightEnd;
using journal::PlayEnd;

namespace {
class DeviceNightTest : public NightFixture
{
};
} // namespace

/** On a device no play passes: it was commanded and answered, or it failed. */
TEST_F(DeviceNightTest, DeviceIsCommandedAndNotObserved)
{
    struct AnsweringDevice : run::Device
    {
        std::string send(const std::string& line) override
        {
            mSent += line;
            mAnswer = mAnswers[mCount++ % 6];
            return mAnswer == "gone" ? "nobody reads it" : "";
        }
        std::string problem() override
        {
            return mCount == 5 && ++mLooks > 3 ? "nobody reads it" : "";
        }
        int mLooks = 0;
        const char* mAnswers[6] = {"Execute Config 1 once", "Wrong Config: 1",       "gone", "",
                                   "Execute Config 3 once", "Execute Config 30 once"};
        size_t mCount = 0;
        std::string mSent;
        std::string mAnswer;
    } device;
    const SimulatedNight night = sixPlays();
    MemoryJournal journal;
    run::DeviceNight played(night.mBegin, 2'000'000'000, {}, device, journal);
    run::Moment now;
    played.begin(now);
    for (int tenths = 0; !played.isOver() && tenths < 10'000; ++tenths) {
        now.mSteadyNs += 100'000'000;
        now.mWallNs += 100'000'000;
        played.addLogLine(std::exchange(device.mAnswer, ""), now);
        played.tick(now);
    }
    EXPECT_EQ(device.mSent, "s1\ns1\ns2\ns2\ns3\ns3\n");
    std::string verdicts;
    for (const PlayEnd& end : journal.all<PlayEnd>()) {
        verdicts += nameOf(end.mVerdict)[0];
    }
    EXPECT_EQ(verdicts, "nfffff") << textOf(journal);
    std::string kinds;
    for (const journal::Finding& finding : journal.all<journal::Finding>()) {
        kinds += finding.mKind + ' ';
    }
    EXPECT_EQ(kinds, "rejected notSent notAnswered died notAnswered ") << textOf(journal);
    EXPECT_EQ(journal.all<NightEnd>().size(), 1U);
}
