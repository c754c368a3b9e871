#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

#include "Files.h"
#include "base/CaseError.h"
#include "journal/Journal.h"
#include "journal/JournalWriter.h"

using namespace journal;

namespace {

NightBegin wholeNight()
{
    NightBegin night;
    night.mName = "night";
    night.mPlanPath = "plans/n\u00e4chte.toml";
    night.mPlanHash = "aa";
    night.mStageHash = "bb";
    night.mIsObserved = false;
    night.mGapNs = 2'000'000'000;
    night.mSeed = 18446744073709551615ULL;
    night.mUntilFailure = true;
    night.mCases = {{"dip", 1, "stage/dip.csv", 7200, 2, 400'000'000, 10, "signal dip", {"rms"}}};
    night.mOrder = {0, 0};
    night.mEnvironment = {{"host", "desk"}};
    night.mMeasuring = {100.0, 10.0, 63.5, 1.0, 60.0};
    return night;
}

TEST(JournalTest, EveryStepReadsBackAsWritten)
{
    const Step steps[] = {wholeNight(),
                          Resumed{{{"host", "desk"}}},
                          ProgramStarted{2},
                          PlayBegin{7},
                          CommandSent{7, "s1"},
                          Finding{7, "missing", "60 samples", 1764100000000000001, "kept/7.bin"},
                          Finding{std::nullopt, "died", "by \"9\"\n", std::nullopt, ""},
                          Remark{"a fault did not happen"},
                          PlayEnd{7, PlayVerdict::NotObserved, 1, 2, 3, 4, 5},
                          PlayEnd{8, PlayVerdict::Passed, 0, 0, 0, std::nullopt, 0},
                          ProgramEnded{2, "the program was killed by signal 9"},
                          NightEnd{NightEnd::Reason::GaveUp, "it died twice"}};
    for (const Step& step : steps) {
        const std::string line = lineOf({1764100000000000001, step});
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
        const Entry read = parseEntry(line);
        EXPECT_EQ(read.mTimeNs, 1764100000000000001);
        EXPECT_EQ(read.mStep.index(), step.index());
        EXPECT_EQ(lineOf(read), line);
        for (size_t cut = 0; cut < line.size(); ++cut) {
            EXPECT_THROW(parseEntry(std::string_view(line).substr(0, cut)), base::CaseError) << cut;
        }
    }
}

/** Nothing is converted to fit. */
TEST(JournalTest, RejectsInvalidStepsWithTheirField)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", "no JSON object"},
        {"{}", "t: missing"},
        {R"({"t":1})", "step: missing"},
        {R"({"t":1,"step":"sleep"})", "step: not known, found \"sleep\""},
        {R"({"t":1,"step":"over","reason":"tired","text":""})",
         "reason: not known, found \"tired\""},
        {R"({"t":1,"step":"remark","text":7})", "text: expected a text, found 7"},
        {R"({"t":1,"step":"begin"})", "play: missing"},
        {R"({"step":"begin","play":1})", "t: missing"},
        {R"({"t":1,"step":"begin","play":1099511627776})",
         "play: expected a whole number, 0 to 2147483647, found 1099511627776"},
        {R"({"t":1,"step":"begin","play":-1})",
         "play: expected a whole number, 0 to 2147483647, found -1"},
        {R"({"t":1,"step":"begin","play":1.5})",
         "play: expected a whole number, 0 to 2147483647, found 1.5"},
        {R"({"t":9223372036854775808,"step":"begin","play":1})",
         "t: expected a whole number, -9223372036854775808 to 9223372036854775807, found "
         "9223372036854775808"},
        {R"({"t":1,"step":"started","run":0})",
         "run: expected a whole number, 1 to 2147483647, found 0"},
    };
    for (const auto& [line, message] : rows) {
        try {
            parseEntry(line);
            ADD_FAILURE() << line;
        } catch (const base::CaseError& error) {
            EXPECT_STREQ(error.what(), message);
        }
    }
}

TEST(JournalTest, CutJournalIsReadUpToTheCut)
{
    const TestFiles files;
    const std::string path = files.path("journal.jsonl");
    const Step steps[] = {wholeNight(), ProgramStarted{1}, PlayBegin{0}, CommandSent{0, "s1"}};
    std::vector<size_t> ends;
    {
        JournalWriter writer(path, 0, 0);
        EXPECT_THROW(JournalWriter(path, 0, 0), base::CaseError); // one writer at a time
        for (const Step& step : steps) {
            writer.append({5, step});
            ends.push_back(readFile(path).size());
        }
    }
    const std::string whole = readFile(path);
    EXPECT_THROW(JournalWriter(path, 0, 0), base::CaseError); // a night of another process
    EXPECT_EQ(readFile(path), whole);
    for (size_t cut = 0; cut <= whole.size(); ++cut) {
        writeFile(path, whole.substr(0, cut));
        const Journal journal = readJournal(path);
        const auto count = static_cast<size_t>(
            std::count_if(ends.begin(), ends.end(), [cut](size_t end) { return end <= cut; }));
        ASSERT_EQ(journal.mEntries.size(), count) << cut;
        EXPECT_EQ(journal.night() != nullptr, count > 0);
        if (cut % 40 != 0) { // flushing to the disk is slow
            continue;
        }
        JournalWriter(path, journal.mWholeBytes, cut).append({6, Resumed{}});
        ASSERT_EQ(readFile(path),
                  whole.substr(0, count > 0 ? ends[count - 1] : 0) + lineOf({6, Resumed{}}) + "\n");
    }
}

TEST(JournalTest, LineOfTheLargestPlanIsRead)
{
    const TestFiles files;
    NightBegin night = wholeNight();
    night.mCases.resize(10'000, night.mCases.front());
    night.mOrder.assign(100'000, 9'999);
    const std::string line = lineOf({1, night}) + '\n';
    const std::string path =
        files.make("journal.jsonl", line + lineOf({2, ProgramStarted{1}}) + '\n').toStdString();
    const Journal journal = readJournal(path);
    ASSERT_EQ(journal.mEntries.size(), 2U);
    EXPECT_EQ(journal.night()->mOrder, night.mOrder);
}

TEST(JournalTest, FullDiskKeepsEarlierEntries)
{
    const TestFiles files;
    const std::string path = files.path("journal.jsonl");
    JournalWriter writer(path, 0, 0);
    writer.append({5, wholeNight()});
    const std::string before = readFile(path);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit full{before.size() + 3, old.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_THROW(writer.append({6, ProgramStarted{1}}), base::CaseError);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(readFile(path), before);
}

NightBegin nightAtTheDesk()
{
    NightBegin night = wholeNight();
    night.mIsObserved = true;
    night.mUntilFailure = false;
    return night;
}

/** An edited journal is refused where it contradicts itself, with the line and the field. */
TEST(JournalTest, RejectsContradictingSteps)
{
    const PlayEnd passed{0, PlayVerdict::Passed, 1, 2, 7200, std::nullopt, 0};
    PlayEnd withFinding = passed;
    withFinding.mFindings = 1;
    PlayEnd tooShort = passed;
    tooShort.mSamples = 7199;
    PlayEnd unseen = passed;
    unseen.mVerdict = PlayVerdict::NotObserved;
    NightBegin wrongOrder = nightAtTheDesk();
    wrongOrder.mOrder = {0, 1};
    const Step night = nightAtTheDesk();
    const PlayBegin begin{0};
    const Finding missing{0, "missing", "60 samples", std::nullopt, ""};
    const NightEnd done{NightEnd::Reason::Done, ""};
    const std::pair<std::vector<Step>, const char*> rows[] = {
        {{ProgramStarted{1}}, ":1: step: the first line is not a night"},
        {{night, night}, ":2: step: a second night"},
        {{wrongOrder}, ":1: order: expected indices of the 1 cases, found 1"},
        {{night, ProgramStarted{2}}, ":2: run: expected 1, found 2"},
        {{night, PlayBegin{1}}, ":2: play: 1 begins, but it is not the next play of the plan"},
        {{night, begin, begin}, ":3: play: 0 begins, but it is not the next play of the plan"},
        {{night, passed}, ":2: play: 0 has not begun"},
        {{night, begin, passed, missing}, ":4: play: 0 has not begun"},
        {{night, begin, withFinding}, ":3: verdict: passed, but the play has findings"},
        {{night, begin, missing, Resumed{}, begin, passed},
         ":6: verdict: passed, but the play has findings"},
        {{night, begin, tooShort}, ":3: samples: 7199 of 7200, but the play passed"},
        {{night, begin, unseen}, ":3: verdict: not observed, but the night is observed"},
        {{night, begin, passed, done}, ":4: reason: done, but not every play has ended"},
        {{night, NightEnd{NightEnd::Reason::Interrupted, ""}, ProgramStarted{1}},
         ":3: step: expected no step after the end of the night"},
    };
    const TestFiles files;
    for (const auto& [steps, message] : rows) {
        std::string text;
        for (const Step& step : steps) {
            text += lineOf({1, step}) + '\n';
        }
        const std::string path = files.make("journal.jsonl", text).toStdString();
        try {
            readJournal(path);
            ADD_FAILURE() << text;
        } catch (const base::CaseError& error) {
            EXPECT_EQ(error.what(), path + message + "; expected a journal of vx-campaign run");
        }
    }
}

TEST(JournalTest, InvalidLineInTheMiddleIsNamed)
{
    const TestFiles files;
    const std::string path = files
                                 .make("journal.jsonl", lineOf({1, wholeNight()}) + "\n{}\n" +
                                                            lineOf({1, ProgramStarted{1}}) + "\n")
                                 .toStdString();
    try {
        readJournal(path);
        ADD_FAILURE();
    } catch (const base::CaseError& error) {
        EXPECT_EQ(error.what(), path + ":2: t: missing; expected a journal of vx-campaign run");
    }
}

} // namespace
