#include <algorithm>

#include "Playback.h"
#include "SandboxedTest.h"

namespace {
constexpr qint64 kNsPerSecond = 1'000'000'000;

const ValueCase kCase{1, {steady(720)}};

const std::string kLoopBegins = "INFO Simulator Starting endless simulation loop\n";
} // namespace

/** The real program under signals; $$ is its process in the scripts. */
class SignalTest : public SandboxedTest
{
protected:
    SignalTest()
    {
        mRunner.writeFile("vx-simulator.conf", "0,1," + kCase.fileName() + "\n");
        mRunner.writeFile(kCase.fileName(), kCase.fileText());
    }

    /** Plays with `script` beside the program; every record that arrived follows the one before. */
    void play(const Words& options, const std::string& script)
    {
        mResult = sandbox(joined({"--record", "record.bin", "--events", "events.jsonl"}, options),
                          after("(" + script + ") &", kSimulator));
        mEvents = eventsOf(mRunner.readFile("events.jsonl"));
        const std::vector<SampleRecord> records = recordsOf(mRunner.readFile("record.bin"));
        ASSERT_FALSE(records.empty()) << mResult;
        playedCases(records, {kCase});
        const std::string text = log();
        EXPECT_EQ(text.substr(text.size() - std::min(text.size(), kLoopBegins.size())),
                  kLoopBegins);
    }

    CommandResult mResult;
    std::vector<Event> mEvents;
};

/** It plays on, catches up, and is in step at the end. */
TEST_F(SignalTest, SuspensionIsMadeGood)
{
    play({"--for", "7"}, "sleep 1; kill -STOP $$; sleep 5; kill -CONT $$");
    EXPECT_EQ(mResult.mExitCode, 0) << mResult;
    qint64 pauseNs = 0;
    for (std::size_t at = 1; at < mEvents.size(); ++at) {
        pauseNs = std::max(pauseNs, mEvents[at].mArrivalNs - mEvents[at - 1].mArrivalNs);
    }
    EXPECT_GE(pauseNs, 4.5 * kNsPerSecond);
    const auto r2h = std::find_if(mEvents.rbegin(), mEvents.rend(),
                                  [](const Event& it) { return it.mWords.size() == 12; });
    ASSERT_NE(r2h, mEvents.rend());
    const qint64 stamp = qint64{r2h->mWords[0]} * kNsPerSecond + r2h->mWords[1];
    EXPECT_LT(r2h->mArrivalNs - stamp, kNsPerSecond / 4) << mResult;
}

/** While it sleeps and writes, and while a stall holds it in a write. */
TEST_F(SignalTest, StormOfHarmlessSignalsLosesNothing)
{
    play({"--for", "2", "--fault", "adc-in:30:stall=0.5:2"},
         "while kill -URG $$ && kill -CHLD $$ && kill -CONT $$ && kill -WINCH $$; do\n"
         "  n=$((n+1)); [ $((n % 16)) = 0 ] && { echo >>rounds; sleep 0.001; }; done");
    EXPECT_EQ(mResult.mExitCode, 0) << mResult;
    EXPECT_GT(mRunner.readFile("rounds").size(), 5U) << "of 64 signals each";
    RecordProperty("signals", std::to_string(64 * mRunner.readFile("rounds").size()));
    for (const Event& it : mEvents) {
        EXPECT_TRUE(it.mIsAccepted);
    }
}

struct End
{
    const char* mSignal;
    const char* mFault;
    int mExitCode;
};

/** In a sleep or in a write that stalls, each of which would go on for long; blocks are whole. */
TEST_F(SignalTest, EndsAtOnceAndTearsNothing)
{
    const End ends[] = {{"TERM", "d2h:1:EIO", 143},
                        {"INT", "d2h:1:EIO", 130},
                        {"TERM", "adc-in:30:stall=9", 143},
                        {"INT", "adc-in:30:stall=9", 130}};
    for (const End& end : ends) {
        SCOPED_TRACE(std::string(end.mSignal) + " " + end.mFault);
        play({"--fault", end.mFault}, std::string("sleep 0.8; kill -") + end.mSignal + " $$");
        EXPECT_EQ(mResult.mExitCode, end.mExitCode) << mResult;
        EXPECT_LT(mResult.mSeconds, 3);
        for (const Event& it : mEvents) {
            EXPECT_TRUE(it.mFile != "adc-in" || it.mBytes == 360 * 48) << it.mBytes;
        }
        mRunner.writeFile("simulator.log", "");
    }
}
