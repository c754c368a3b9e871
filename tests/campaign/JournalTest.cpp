#include <gtest/gtest.h>

#include "journal/Entries.h"

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
    night.mCases = {{"dip", 1, "stage/dip.csv", 7200, 2, 400'000'000, 10, "signal dip", {"rms"}}};
    night.mOrder = {0, 0};
    night.mEnvironment = {{"host", "desk"}};
    return night;
}

TEST(JournalTest, EveryStepSurvivesItsLine)
{
    const Step steps[] = {wholeNight(),
                          Resumed{{{"host", "desk"}}},
                          ProgramStarted{2},
                          PlayBegin{7},
                          CommandSent{7, "s1"},
                          FoundWrong{7, "missing", "60 samples", 1764100000000000001, "kept/7.bin"},
                          FoundWrong{std::nullopt, "died", "by \"9\"\n", std::nullopt, ""},
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

} // namespace
