#include <QRegularExpression>
#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "Playback.h"
#include "SandboxedTest.h"

namespace {
constexpr std::size_t kBlocksFromPacingToPacing = 11;

constexpr Stretch k60Hz{900, "60", 46'296, 1'666'666};

/** The writer computes in single precision; in double precision the period would be 2002001. */
constexpr Stretch kBelow50Hz{400, "49.95", 55'611, 2'002'002};

/** From 10 on, the first digit of a case's number is the configuration that plays it. */
const std::vector<ValueCase>& allCases()
{
    static const std::vector<ValueCase> cases = {
        {1, {steady(400)}},  {2, {steady(361)}},
        {3, {steady(1)}},    {4, {steady(360)}},
        {11, {steady(360)}}, {12, {steady(720)}},
        {21, {k60Hz}},       {22, {steady(100), k60Hz, kBelow50Hz}},
        {23, {kBelow50Hz}},
    };
    return cases;
}

const ValueCase& caseOf(const SampleRecord& record)
{
    return *std::find_if(allCases().begin(), allCases().end(),
                         [&](const ValueCase& it) { return it.number() == record.mValues[0]; });
}

const Stretch& inForce(const SampleRecord& record)
{
    return caseOf(record).inForce(record.mValues[1]);
}

qint64 realtimeNs()
{
    return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}
} // namespace

/** The real program in the sandbox, judged by what arrived at the driver and by the log. */
class ProgramTest : public SandboxedTest
{
protected:
    /** Plays `configuration` for some seconds after the first block, and checks what holds of any
     * run: every record and time stamp, the side records, the summary. */
    void play(const std::string& configuration, const std::string& seconds, const Words& sends = {},
              const Words& program = kSimulator);

    /** Expects the numbers of the cases in their order, a blank behind each, to match. */
    void expectPlayed(const QString& pattern) const;

    /** The log after the start of the endless loop. */
    std::string loopLog() const;

    CommandResult mResult;
    std::vector<SampleRecord> mRecords;
    std::vector<Event> mEvents;
    std::vector<int> mPlayed;

private:
    void checkEvents() const;
    void checkSummary() const;
};

void ProgramTest::play(const std::string& configuration, const std::string& seconds,
                       const Words& sends, const Words& program)
{
    mRunner.writeFile("vx-simulator.conf", configuration);
    for (const ValueCase& it : allCases()) {
        mRunner.writeFile(it.fileName(), it.fileText());
    }
    Words options = {"--record", "record.bin", "--events", "events.jsonl", "--for", seconds};
    for (const std::string& send : sends) {
        options.insert(options.end(), {"--send", send});
    }
    mResult = sandbox(options, program);
    ASSERT_EQ(mResult.mExitCode, 0) << mResult;
    ASSERT_EQ(mResult.mErrors, "") << mResult;
    mRecords = recordsOf(mRunner.readFile("record.bin"));
    mEvents = eventsOf(mRunner.readFile("events.jsonl"));
    ASSERT_FALSE(mRecords.empty()) << mResult;
    mPlayed = playedCases(mRecords, allCases());
    if (!HasFailure()) {
        checkEvents();
        checkSummary();
    }
}

/** Side records follow the blocks 1, 12, 23, ... and say what the blocks say. */
void ProgramTest::checkEvents() const
{
    std::size_t blocks = 0;
    std::size_t records = 0;
    std::size_t pacings = 0;
    for (const Event& event : mEvents) {
        EXPECT_TRUE(event.mIsAccepted) << event.mFile << ", " << event.mBytes << " bytes";
        if (event.mFile == "adc-in") {
            // Neither a block of two cases nor a short one within a case.
            const SampleRecord& first = mRecords[records];
            EXPECT_EQ(event.mBytes / 48,
                      std::min(360, caseOf(first).lineCount() - first.mValues[1]));
            ++blocks;
            records += static_cast<std::size_t>(event.mBytes) / sizeof(SampleRecord);
            ASSERT_LE(records, mRecords.size());
        } else if (event.mFile == "f2h") {
            ASSERT_EQ(blocks, 1 + kBlocksFromPacingToPacing * pacings);
            EXPECT_EQ(event.mWords.at(0), inForce(mRecords[records - 1]).mPeriod);
            ++pacings;
        } else if (event.mFile == "r2h") {
            const SampleRecord& last = mRecords[records - 1];
            EXPECT_EQ(std::vector<quint32>(event.mWords.begin(), event.mWords.begin() + 4),
                      (std::vector<quint32>{last.mSeconds, last.mNanoseconds, 0, 0}));
        }
    }
    EXPECT_EQ(records, mRecords.size());
    // The end may have come while the writer slept, before the records of its last pacing.
    EXPECT_GE(kBlocksFromPacingToPacing * (pacings + 1), blocks);
}

void ProgramTest::checkSummary() const
{
    const auto blocks = std::count_if(mEvents.begin(), mEvents.end(),
                                      [](const Event& it) { return it.mFile == "adc-in"; });
    auto rows = summary(mResult);
    EXPECT_EQ(rows["blocks"], std::to_string(blocks));
    EXPECT_EQ(rows["refused writes"], "0");
    EXPECT_EQ(rows["samples"], std::to_string(mRecords.size()));
    const std::string digits = std::to_string(1'000'000'000U + mRecords.back().mNanoseconds);
    EXPECT_EQ(rows["last time stamp"],
              std::to_string(mRecords.back().mSeconds) + "." + digits.substr(1));
}

void ProgramTest::expectPlayed(const QString& pattern) const
{
    QString played;
    for (const int number : mPlayed) {
        played += QString::number(number) + " ";
    }
    const QRegularExpression whole(QRegularExpression::anchoredPattern(pattern));
    EXPECT_TRUE(whole.match(played).hasMatch()) << played.toStdString();
}

std::string ProgramTest::loopLog() const
{
    const std::string start = "INFO Simulator Starting endless simulation loop\n";
    const std::string text = log();
    const std::size_t at = text.find(start);
    return at == std::string::npos ? "not started:\n" + text : text.substr(at + start.size());
}

constexpr char kThree[] = "0,1,case-4.csv\n1,1,case-11.csv\n1,2,case-12.csv\n2,1,case-21.csv\n";
constexpr char kOnceOne[] = "INFO Configuration Execute Config 1 once\n";

TEST_F(ProgramTest, PlaysRepetitionsAndFrequenciesInTheirOrder)
{
    const std::string configuration =
        "# number, repetitions, file\n0 , 2 ,case-1.csv # the first\n\n0,0,case-2.csv\n"
        "0,1,case-22.csv\n0,3,case-3.csv\n0,1,case-23.csv\n";
    play(configuration, "1.2");
    expectPlayed("(1 1 22 3 3 3 23 )+(1 ){0,2}(22 )?(3 ){0,3}");
    EXPECT_EQ(loopLog(), "");
}

TEST_F(ProgramTest, FollowsTheOperator)
{
    play(kThree, "1.6", {"0.1:abc", "0.3:s1", "0.9:2"});
    expectPlayed("(4 )+11 12 12 (4 )+(21 )+");
    EXPECT_EQ(loopLog(), std::string("ERROR Configuration Could not convert abc\nto unsigned\n") +
                             kOnceOne + "INFO Configuration Execute Config 2 continuous\n");
}

/** Nothing to play at first: no spinning, no flood of messages, and the operator is heard. */
TEST_F(ProgramTest, IdleProgramWaitsForTheOperator)
{
    const std::string sendLater =
        "timeout 20 sh -c 'until [ -p /etc/vx/simulator_control ]; do sleep 0.02; done\n"
        "sleep 2; echo s1 >/etc/vx/simulator_control' &";
    play("0,0,case-4.csv\n1,1,case-11.csv\n", "0.3", {}, after(sendLater, kSimulator));
    EXPECT_EQ(mPlayed, std::vector<int>{11});
    EXPECT_EQ(loopLog(), kOnceOne);
    EXPECT_LT(mResult.mCpuSeconds, kIdleShare * mResult.mSeconds) << mResult;

    std::remove(mRunner.path("simulator.log").c_str());
    mRunner.writeFile("vx-simulator.conf", "# nothing\n");
    mResult = sandbox({}, after(sendLater, joined({"timeout", "3"}, kSimulator)));
    EXPECT_EQ(mResult.mExitCode, 124) << mResult;
    EXPECT_EQ(loopLog(), "ERROR Configuration Wrong Config: 1\n");
    EXPECT_EQ(summary(mResult)["blocks"], "0") << mResult;
    EXPECT_LT(mResult.mCpuSeconds, kIdleShare * mResult.mSeconds) << mResult;
}

/**
 * The pace: signal time against the time of arrival.
 *
 * Blocks come in bursts of eleven, so a line through all blocks depends on where the run begins
 * and ends within a burst (0.3 % over 4 s). The r2h record is free of that: it is written right
 * after the writer has slept until the wall clock reaches the time stamp that the record carries.
 * A loaded machine makes that late, never early, and the writer makes up for it; so of several
 * records the least late one shows the pace that the writer keeps. Between the least late ones of
 * the first and the last third, at least 1.6 s apart, 0.1 % leaves 1.6 ms for what even these are
 * late.
 */
TEST_F(ProgramTest, MeanRateIsThatOfTheSteps)
{
    constexpr qint64 kSkippedWaitNs = 2'001'000;
    const qint64 startNs = realtimeNs();
    play("0,1,case-1.csv\n0,1,case-4.csv\n0,3,case-23.csv\n", "5");
    const qint64 firstStampNs = stampNs(mRecords.front());
    EXPECT_GT(firstStampNs, startNs);
    EXPECT_LT(firstStampNs, mEvents.front().mArrivalNs + inForce(mRecords.front()).mStepNs);

    struct Pacing
    {
        qint64 mArrivalNs;
        qint64 mLateNs;
    };
    std::vector<Pacing> pacings;
    for (const Event& event : mEvents) {
        if (event.mFile == "r2h") {
            const qint64 signalNs = qint64{event.mWords[0]} * 1'000'000'000 + event.mWords[1];
            pacings.push_back({event.mArrivalNs, event.mArrivalNs - signalNs});
            EXPECT_GE(pacings.back().mLateNs, -kSkippedWaitNs);
        }
    }
    const auto third = static_cast<std::ptrdiff_t>(pacings.size() / 3);
    ASSERT_GE(third, 3) << mResult;
    const auto isLessLate = [](const Pacing& left, const Pacing& right) {
        return left.mLateNs < right.mLateNs;
    };
    const Pacing early = *std::min_element(pacings.begin(), pacings.begin() + third, isLessLate);
    const Pacing late = *std::min_element(pacings.end() - third, pacings.end(), isLessLate);
    const auto arrivalNs = static_cast<double>(late.mArrivalNs - early.mArrivalNs);
    EXPECT_LT(std::abs(static_cast<double>(late.mLateNs - early.mLateNs)), 0.001 * arrivalNs)
        << mResult;
}
