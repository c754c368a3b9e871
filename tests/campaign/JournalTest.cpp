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

TEST(JournalTest, EveryStepSurvivesItsLine)
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
        const std::optional<Entry> read = parseEntry(line);
        ASSERT_TRUE(read) << line;
        EXPECT_EQ(read->mTimeNs, 1764100000000000001);
        EXPECT_EQ(read->mStep.index(), step.index());
        EXPECT_EQ(lineOf(*read), line);
        for (size_t cut = 0; cut < line.size(); ++cut) {
            EXPECT_FALSE(parseEntry(std::string_view(line).substr(0, cut))) << cut;
        }
    }
}

TEST(JournalTest, WhatIsNoStepIsNone)
{
    for (const char* line : {"", "{}", R"({"t":1})", R"({"t":1,"step":"sleep"})",
                             R"({"t":1,"step":"over","reason":"tired","text":""})",
                             R"({"t":1,"step":"begin"})", R"({"step":"begin","play":1})"}) {
        EXPECT_FALSE(parseEntry(line)) << line;
    }
}

TEST(JournalTest, WhereverItIsCutTheStepsBeforeAreRead)
{
    const TestFiles files;
    const std::string path = files.path("journal.jsonl");
    const Step steps[] = {wholeNight(), ProgramStarted{1}, PlayBegin{0}, CommandSent{0, "s1"}};
    std::vector<size_t> ends;
    {
        JournalWriter writer(path, 0, 0);
        EXPECT_THROW(JournalWriter(path, 0, 0), base::CaseError); // one at a time
        for (const Step& step : steps) {
            writer.append({5, step});
            ends.push_back(readFile(path).size());
        }
    }
    const std::string whole = readFile(path);
    EXPECT_THROW(JournalWriter(path, 0, 0), base::CaseError); // another one's night
    EXPECT_EQ(readFile(path), whole);
    for (size_t cut = 0; cut <= whole.size(); ++cut) {
        writeFile(path, whole.substr(0, cut));
        const Journal journal = readJournal(path);
        const auto count = static_cast<size_t>(
            std::count_if(ends.begin(), ends.end(), [cut](size_t end) { return end <= cut; }));
        ASSERT_EQ(journal.mEntries.size(), count) << cut;
        EXPECT_EQ(journal.night() != nullptr, count > 0);
        if (cut % 40 != 0) { // each flush to the disk takes its time
            continue;
        }
        JournalWriter(path, journal.mWholeBytes, cut).append({6, Resumed{}});
        ASSERT_EQ(readFile(path),
                  whole.substr(0, count > 0 ? ends[count - 1] : 0) + lineOf({6, Resumed{}}) + "\n");
    }
}

TEST(JournalTest, TheLargestPlanHasALineThatIsRead)
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

TEST(JournalTest, AFullDiskLeavesTheEntriesBefore)
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

TEST(JournalTest, ALineInTheMiddleThatIsNoStepIsNamed)
{
    const TestFiles files;
    const std::string night = lineOf({1, wholeNight()}) + "\n";
    const std::string started = lineOf({1, ProgramStarted{1}}) + "\n";
    const std::pair<std::string, std::string> wrong[] = {
        {night + "{}\n" + started, ":2: "}, {started, ":1: "}, {night + night, ":2: "}};
    for (const auto& [text, place] : wrong) {
        const std::string path = files.make("journal.jsonl", text).toStdString();
        try {
            readJournal(path);
            ADD_FAILURE() << text;
        } catch (const base::CaseError& error) {
            EXPECT_EQ(error.what(),
                      path + place + "expected a step of a night, as vx-campaign run writes it");
        }
    }
}

} // namespace
