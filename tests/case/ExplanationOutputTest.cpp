#include "explain/ExplanationOutputs.h"

#include <gtest/gtest.h>

#include "Files.h"
#include "explain/SampleText.h"

namespace {
constexpr qint64 kStampNs = 1'700'000'000'000'000'000;

/** The text between the heading and the end, in one of the two forms. */
class ExplanationOutputTest : public testing::Test
{
protected:
    template <typename Reported>
    std::string textOf(const Reported& reported) const
    {
        base::ResultFile file(mFiles.path("out.txt"));
        explain::explanationText(file, 8, false)->add(reported);
        file.commit();
        const std::string text = readFile(mFiles.path("out.txt"));
        return text.substr(text.find('\n') + 1);
    }

    template <typename Reported>
    std::string jsonOf(const Reported& reported) const
    {
        base::ResultFile file(mFiles.path("out.jsonl"));
        explain::explanationJson(file, false)->add(reported);
        file.commit();
        return readFile(mFiles.path("out.jsonl"));
    }

    TestFiles mFiles;
};
} // namespace

/** Samples count from 1; a complete segment has no remark on its ends. */
TEST_F(ExplanationOutputTest, ReportsWhereASegmentIsCut)
{
    const struct
    {
        size_t mFirst;
        size_t mLast;
        const char* mExpected;
    } rows[] = {{0, 359, ""},
                {1, 359, "  from its sample 2"},
                {0, 358, "  up to its sample 359"},
                {359, 0, "  from its sample 360  up to its sample 1"}};
    for (const auto& row : rows) {
        const explain::PlayedSegment segment{{0, 3},    "sag.csv", 360,          2,  row.mFirst,
                                             row.mLast, kStampNs,  kStampNs + 1, 720};
        EXPECT_EQ(textOf(segment),
                  "0, 3          sag.csv          2  1700000000.000000000  "
                  "1700000000.000000001          720" +
                      std::string(row.mExpected) + "\n");
        EXPECT_EQ(jsonOf(segment),
                  "{\"kind\":\"stretch\",\"configurations\":[0,3],\"file\":\"sag.csv\","
                  "\"passes\":2,\"firstSample\":" +
                      std::to_string(row.mFirst + 1) +
                      ",\"lastSample\":" + std::to_string(row.mLast + 1) +
                      ",\"firstStampNs\":1700000000000000000,"
                      "\"lastStampNs\":1700000000000000001,\"samples\":720}\n");
    }
}

TEST_F(ExplanationOutputTest, ReportsTheResultOfACommand)
{
    const std::string json = "{\"kind\":\"command\",\"text\":\"s2\",\"arrivalNs\":";
    const std::string stamp = std::to_string(kStampNs);
    const struct
    {
        explain::CommandOutcome mOutcome;
        std::string mText;
        std::string mJson;
    } rows[] = {
        {{"s2", kStampNs, "no such number", {}, 0},
         "rejected: no such number",
         ",\"problem\":\"no such number\"}\n"},
        {{"s2", kStampNs, "", {}, 0},
         "still waiting at the end: no sample of it in the recording",
         "}\n"},
        {{"s2", kStampNs, "", kStampNs + 250'000'000, kStampNs - 1},
         "first sample 0.250000 s later, stamped 1699999999.999999999",
         ",\"seconds\":0.25,\"firstStampNs\":1699999999999999999}\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(textOf(row.mOutcome),
                  "command 's2' at 1700000000.000000000: " + row.mText + "\n");
        EXPECT_EQ(jsonOf(row.mOutcome), json + stamp + row.mJson);
    }
}

/** Good only without any finding; bytes of an incomplete record are no finding. */
TEST_F(ExplanationOutputTest, VerdictListsEachKindOfFinding)
{
    EXPECT_EQ(textOf(explain::Verdict{7, 0, explain::FindingCounts()}),
              "verdict: good: 7 samples as expected\n");
    EXPECT_EQ(textOf(explain::Verdict{7, 47, explain::FindingCounts()}),
              "verdict: good: 7 samples as expected, and 47 bytes of the next\n");
    for (int kind = 0; kind < static_cast<int>(explain::FindingKind::Count); ++kind) {
        const explain::Finding finding{static_cast<explain::FindingKind>(kind), 41, 3, "why"};
        const explain::FindingName& name = nameOf(finding.mKind);
        explain::FindingCounts counts(0);
        EXPECT_FALSE(counts.add(finding)) << "none is listed";
        EXPECT_EQ(textOf(explain::Verdict{7, 0, counts}),
                  "verdict: BAD: " + std::string(name.mText) + " 3\n");
        const std::string json = jsonOf(explain::Verdict{7, 0, counts});
        EXPECT_EQ(json.substr(0, 43), R"({"kind":"verdict","good":false,"samples":7,)");
        EXPECT_NE(json.find("\"" + std::string(name.mKey) + "\":3"), std::string::npos) << json;
        EXPECT_EQ(textOf(finding), name.mIsOfRun ? "! why\n" : "! record 42: why\n");
        EXPECT_EQ(jsonOf(finding), "{\"kind\":\"finding\",\"finding\":\"" + std::string(name.mKey) +
                                       "\",\"record\":42,\"count\":3,\"text\":\"why\"}\n");
    }
}

/** Each differing field by its name; values of channels may be negative. */
TEST_F(ExplanationOutputTest, DifferencesAreNamed)
{
    explain::PlayedFile file("dip.csv");
    file.read(mFiles.make("dip.csv", repeated(valueLine("7", "50"), 3)));
    const explain::SampleContent same = file.samples()[2];
    EXPECT_EQ(differenceText(file, 2, same), "sample 3 of dip.csv");
    explain::SampleContent found = same;
    found[0] = 4'000'000'000;
    EXPECT_EQ(differenceText(file, 2, found),
              "sample 3 of dip.csv: auxiliary word has 4000000000 instead of 7");
    found = same;
    found[1] = 9;
    found[2] = static_cast<quint32>(-5);
    found[9] = 0;
    EXPECT_EQ(differenceText(file, 0, found), "sample 1 of dip.csv: flag word has 9 instead of " +
                                                  std::to_string(same[1]) +
                                                  ", channel 0 has -5 instead of 1, channel 7 has "
                                                  "0 instead of 8");
}

/** A block has the step of its first line; the sum of steps is the time of a sample. */
TEST_F(ExplanationOutputTest, PlayedFileKnowsItsTimes)
{
    explain::PlayedFile file("two.csv");
    file.read(mFiles.make(
        "two.csv", repeated(valueLine("7", "50"), 400) + repeated(valueLine("7", "60"), 400)));
    const std::pair<size_t, qint64> times[] = {{0, 0},
                                               {1, 55'555},
                                               {360, 360 * 55'555},
                                               {720, 720 * 55'555},
                                               {721, 720 * 55'555 + 46'296},
                                               {800, 720 * 55'555 + 80 * 46'296}};
    for (const auto& [sample, ns] : times) {
        EXPECT_EQ(file.timeBefore(sample), ns) << sample;
        EXPECT_EQ(file.sampleAtTime(ns + 1), std::nullopt) << sample;
        if (sample > 0) {
            EXPECT_EQ(file.sampleAtTime(ns), sample - 1);
            EXPECT_EQ(file.sampleAtTime(ns - 1), std::nullopt) << sample;
        }
    }
    EXPECT_EQ(file.durationNs(), times[5].second);
    EXPECT_EQ(file.longestStepNs(), 55'555);
    EXPECT_FALSE(file.hasOnlyStep(55'555));
    EXPECT_TRUE(file.hasAllSteps());
    EXPECT_TRUE(file.isSame(0, 719));
    EXPECT_FALSE(file.isSame(0, 720)) << "another step";
    EXPECT_TRUE(file.repeats(0, 360, 360));
    EXPECT_FALSE(file.repeats(0, 361, 360));
}
