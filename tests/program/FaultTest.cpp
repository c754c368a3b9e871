#include <algorithm>
#include <cstdlib>

#include "Playback.h"
#include "SandboxedTest.h"

namespace {
constexpr qint64 kNsPerSecond = 1'000'000'000;
constexpr double kCpuShare = 0.05;

/** One block long, so that every block is one playing of it. */
const ValueCase kCase{1, {steady(360)}};
constexpr qint64 kBlockNs = 360 * 55'555;

/** How a driver can go wrong, and what that does to the stream. */
struct Kind
{
    const char* mName;
    const char* mBlockFault;  ///< WHAT[:COUNT] of the sample buffer; two blocks or writes meet it
    const char* mRecordFault; ///< WHAT:COUNT of f2h and r2h; two writes meet it
    int mFaulted;             ///< writes that meet a fault in all ...
    int mRefused;             ///< ... and those that the driver's rules refuse
    int mLost;                ///< blocks
};

const Kind kKinds[] = {
    {"EIO", "EIO:2", "EIO:2", 6, 0, 2},
    {"ENOSPC", "ENOSPC:2", "ENOSPC:2", 6, 0, 2},
    {"EAGAIN", "EAGAIN:2", "EAGAIN:2", 6, 0, 2},
    {"ENODEV", "ENODEV:2", "ENODEV:2", 6, 0, 2},
    // Each block is tried 101 times, and so is a record.
    {"EINTR", "EINTR:202", "EINTR:2", 206, 0, 2},
    {"Vanish", "vanish:2", "vanish:2", 6, 0, 2},
    // What the driver left is written behind it, which an attribute does not take.
    {"Short", "short=4800:2", "short=8:2", 6, 2, 0},
    {"Nothing", "short=0:2", "short=0:2", 6, 0, 2},
    {"Stall", "stall=0.7:2", "stall=0.3:2", 6, 0, 0},
};

void PrintTo(const Kind& kind, std::ostream* stream)
{
    *stream << kind.mName;
}

qint64 toInt(const std::string& text)
{
    return std::strtoll(text.c_str(), nullptr, 10);
}
} // namespace

/** The real program while a driver's file goes wrong. */
class FaultTest : public SandboxedTest, public testing::WithParamInterface<Kind>
{
protected:
    FaultTest()
    {
        mRunner.writeFile("vx-simulator.conf", "0,1," + kCase.fileName() + "\n");
        mRunner.writeFile(kCase.fileName(), kCase.fileText());
    }

    /** Plays for some seconds and expects what holds with any fault. */
    void play(const char* seconds, const Words& faults)
    {
        Words options = {"--record", "record.bin", "--events", "events.jsonl", "--for", seconds};
        for (const std::string& fault : faults) {
            options.insert(options.end(), {"--fault", fault});
        }
        const double startUp = sandbox({}, {VX_SIMULATOR, "--version"}).mCpuSeconds;
        mResult = sandbox(options, kSimulator);
        EXPECT_EQ(mResult.mExitCode, 0) << "it ended by itself" << mResult;
        const double share = (mResult.mCpuSeconds - startUp) / mResult.mSeconds;
        EXPECT_LT(share, kCpuShare) << mResult;
        RecordProperty("cpu_percent", std::to_string(100 * share));
        mLog = split(log(), '\n');
        mLog.erase(mLog.begin(), std::find(mLog.begin(), mLog.end(), kLoopBegins) + 1);
        EXPECT_LE(static_cast<double>(mLog.size()), 4 * (mResult.mSeconds + 1)) << log();
        mRecords = recordsOf(mRunner.readFile("record.bin"));
        ASSERT_FALSE(mRecords.empty()) << mResult;
        mEvents = eventsOf(mRunner.readFile("events.jsonl"));
    }

    /** Whole blocks with nothing between them but the time of those that were lost. */
    int lostBlocks() const
    {
        qint64 lostNs = 0;
        for (std::size_t at = 1; at < mRecords.size(); ++at) {
            const int line = static_cast<int>(at) % kCase.lineCount();
            const qint64 gapNs = stampNs(mRecords[at]) - stampNs(mRecords[at - 1]) - 55'555;
            EXPECT_EQ(mRecords[at].mValues[1], line) << at;
            EXPECT_TRUE(gapNs == 0 || (line == 0 && gapNs > 0)) << at << ": " << gapNs;
            lostNs += gapNs;
        }
        EXPECT_EQ(lostNs % kBlockNs, 0);
        return static_cast<int>(lostNs / kBlockNs);
    }

    std::ptrdiff_t logged(const std::string& line) const
    {
        return std::count(mLog.begin(), mLog.end(), line);
    }

    /** Of the last write to the sample buffer at which the driver failed; then of the next. */
    std::pair<qint64, qint64> faultEndNs() const
    {
        const auto isFailure = [](const Event& it) {
            return it.mFile == "adc-in" && !it.mIsAccepted;
        };
        const auto last = std::find_if(mEvents.rbegin(), mEvents.rend(), isFailure);
        const auto next = std::find_if(last.base(), mEvents.end(), [](const Event& it) {
            return it.mFile == "adc-in" && it.mIsAccepted;
        });
        if (last == mEvents.rend() || next == mEvents.end()) {
            return {0, last == mEvents.rend() ? 0 : 1000 * kNsPerSecond};
        }
        return {last->mArrivalNs, next->mArrivalNs};
    }

    CommandResult mResult;
    std::vector<SampleRecord> mRecords;
    std::vector<Event> mEvents;
    Words mLog;

private:
    static constexpr char kLoopBegins[] = "INFO Simulator Starting endless simulation loop";
};

/** Every kind on every file that is written: two side records each, then two blocks. */
TEST_P(FaultTest, PassesAndIsOver)
{
    const Kind& kind = GetParam();
    play("4", {std::string("f2h:2:") + kind.mRecordFault, std::string("r2h:4:") + kind.mRecordFault,
               std::string("adc-in:45:") + kind.mBlockFault});
    if (HasFatalFailure()) {
        return;
    }
    EXPECT_EQ(lostBlocks(), kind.mLost);
    EXPECT_EQ(logged("ERROR PrussSimulation error writing file /dev/adc-in"), kind.mLost);
    EXPECT_EQ(static_cast<int>(mLog.size()), 2 * kind.mLost) << log();
    auto rows = summary(mResult);
    EXPECT_EQ(toInt(rows["faulted writes"]), kind.mFaulted) << mResult;
    EXPECT_EQ(toInt(rows["refused writes"]), kind.mRefused) << mResult;
    const auto [endNs, nextNs] = faultEndNs();
    EXPECT_LT(nextNs - endNs, 2 * kNsPerSecond);
    RecordProperty("recovery_ms", std::to_string((nextNs - endNs) / 1'000'000));
    // In step again: a side record is written when the wall clock has reached its time stamp.
    const auto r2h = std::find_if(mEvents.rbegin(), mEvents.rend(),
                                  [](const Event& it) { return it.mWords.size() == 12; });
    ASSERT_NE(r2h, mEvents.rend());
    const qint64 stamp = qint64{r2h->mWords[0]} * kNsPerSecond + r2h->mWords[1];
    EXPECT_NEAR(static_cast<double>(r2h->mArrivalNs - stamp), 0, 0.25 * kNsPerSecond) << mResult;
}

/** The same from half a second on and for ever. */
TEST_P(FaultTest, Stays)
{
    const auto forEver = [](std::string text) {
        return text.replace(text.find(':'), std::string::npos, ":on");
    };
    play("2", {"adc-in:0.5s:" + forEver(GetParam().mBlockFault),
               "f2h:0.5s:" + forEver(GetParam().mRecordFault),
               "r2h:0.5s:" + forEver(GetParam().mRecordFault)});
    if (HasFatalFailure()) {
        return;
    }
    EXPECT_GT(toInt(summary(mResult)["faulted writes"]), 0) << mResult;
    EXPECT_EQ(lostBlocks(), 0) << "none can be seen to be lost: no block follows them";
    const bool takesBlocks = GetParam().mLost == 0;
    EXPECT_EQ(logged("ERROR PrussSimulation error writing file /dev/adc-in") > 0, !takesBlocks);
}

INSTANTIATE_TEST_SUITE_P(, FaultTest, testing::ValuesIn(kKinds),
                         [](const auto& it) { return std::string(it.param.mName); });

TEST_F(FaultTest, WrongDescriptionsAreRejected)
{
    for (const char* text :
         {"", "adc-in", "adc-in:1", "nowhere:1:EIO", "adc-in:0:EIO", "f2h:-1:EIO", "f2h:1:EFOO",
          "f2h:1:short=", "adc-in:1:short=47", "f2h:1:stall=x", "f2h:1:EIO:0", "f2h:1:EIO:1:1",
          "f2h:s:EIO", "f2h::EIO"}) {
        const CommandResult result = sandbox({"--fault", text}, {"true"});
        EXPECT_EQ(result.mExitCode, 125) << text << result;
        EXPECT_NE(result.mErrors.find("--fault takes "), std::string::npos) << text << result;
    }
}

TEST_F(FaultTest, FileThatHasVanishedCannotBeFound)
{
    const CommandResult result =
        sandbox({"--fault", "adc-in:2:vanish", "--fault", "r2h:9:EIO"},
                {"sh", "-c",
                 "try() { head -c 48 /dev/zero >/dev/adc-in && test -e /dev/adc-in; "
                 "echo $?; }; exec 3>/dev/adc-in; try; head -c 48 /dev/zero >&3; try"});
    EXPECT_EQ(programOutput(result), "1\n0\n") << result;
    EXPECT_NE(result.mErrors.find("before a write met the fault r2h:9:EIO"), std::string::npos);
    EXPECT_EQ(summary(result)["faulted writes"], "1");
}
