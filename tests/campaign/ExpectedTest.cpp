#include <gmock/gmock.h>

#include <QDir>

#include "Files.h"
#include "SampleRecord.h"
#include "assess/TableReader.h"
#include "expected/NightJudge.h"
#include "expected/PlayMeasuring.h"
#include "report/ReportText.h"

using journal::PlayVerdict;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {
constexpr qint64 kNightBeginNs = 1'764'108'000'000'000'000;
constexpr qint64 kStepNs = 55'555;
constexpr char kHeading[] = "utc,quantity,channel,value,unit,origin\n";
constexpr char kLimits[] = "tolerance = 0.001\n[[limit]]\nquantity = \"rms\"\nabsolute = 0.5\n";

/** A night of "dip", played twice, with expected values of 230 V each. */
class ExpectedTest : public testing::Test
{
protected:
    ExpectedTest()
    {
        mBegin.mCases = {{"dip", 1, "dip.csv", 7200, 1, 400'000'000, 2, "", {"rms"}}};
        mBegin.mOrder = {0, 0};
        QDir().mkpath(QString::fromStdString(mFiles.path("expected")));
        expect(0, row(0, 230.0));
        expect(1, row(1, 230.0));
    }

    void expect(int play, const std::string& rows) const
    {
        mFiles.make(expectedName(mBegin.mCases[0], play) + ".csv", kHeading + rows);
    }

    /** A value in the second of a play. */
    static std::string row(int play, double volts)
    {
        return report::utcText(kNightBeginNs + play * 1'000'000'000) + ",rms,UA," +
               std::to_string(volts) + ",V,measured\n";
    }

    report::NightSummary night(const std::vector<PlayVerdict>& verdicts) const
    {
        std::vector<journal::Entry> entries = {{kNightBeginNs, mBegin}};
        for (const PlayVerdict verdict : verdicts) {
            const int play = static_cast<int>(entries.size()) / 2;
            entries.push_back({kNightBeginNs, journal::PlayBegin{play}});
            entries.push_back(
                {kNightBeginNs, journal::PlayEnd{play, verdict, kNightBeginNs,
                                                 kNightBeginNs + 7199 * kStepNs, 7200, 1, 0}});
        }
        entries.push_back({kNightBeginNs, journal::NightEnd{}});
        return report::summarize(entries);
    }

    report::CaseAssessment judge(const std::vector<PlayVerdict>& verdicts,
                                 const std::string& rows) const
    {
        expected::MeasuredNight measured;
        measured.mLimits = assess::parseLimits(kLimits, "limits.toml");
        const std::string file = mFiles.make("measured.csv", kHeading + rows).toStdString();
        measured.mValues = assess::readTable(file, assess::measureMap()).mValues;
        return judgeNight(mFiles.path(""), night(verdicts), measured).mCases.at("dip");
    }

    /** Records a play and two periods before it, without one sample. */
    void record(int play, qint64 lost) const
    {
        std::string records;
        for (qint64 k = -720; k < 7200; ++k) {
            SampleRecord record = {};
            const qint64 stampNs = kNightBeginNs + k * kStepNs;
            record.mSeconds = static_cast<quint32>(stampNs / 1'000'000'000);
            record.mNanoseconds = static_cast<quint32>(stampNs % 1'000'000'000);
            records +=
                k == lost ? "" : std::string(reinterpret_cast<char*>(&record), sizeof record);
        }
        mFiles.make(expectedName(mBegin.mCases[0], play) + ".bin", records);
    }

    /** Names, sorted. */
    std::string filesOf(const char* folder) const
    {
        return QDir(QString::fromStdString(mFiles.path(folder)))
            .entryList(QDir::Files)
            .join(' ')
            .toStdString();
    }

    TestFiles mFiles;
    journal::NightBegin mBegin;
};

constexpr auto kPlayPassed = PlayVerdict::Passed;
constexpr auto kPlayFailed = PlayVerdict::Failed;

TEST_F(ExpectedTest, WorstPlayOfEachQuantityCounts)
{
    const struct
    {
        std::vector<PlayVerdict> mPlays;
        std::string mMeasured;
        size_t mBad;
        const char* mVerdict;
        const char* mLast; ///< of the last value
    } rows[] = {
        {{kPlayPassed, kPlayPassed},
         row(0, 230.25) + row(1, 229.75),
         0,
         "good: 2 plays within the limits",
         "within"},
        {{kPlayPassed, kPlayPassed},
         row(0, 230.0) + row(1, 231.0),
         1,
         "not good: 1 of 2 plays; dip (2 of 2): BAD: 1 of 1 values beyond",
         "BEYOND"},
        {{kPlayPassed, kPlayPassed},
         row(0, 231.0) + row(1, 230.0),
         1,
         "not good: 1 of 2 plays; dip (1 of 2): BAD: 1 of 1 values beyond",
         "BEYOND"},
        {{kPlayPassed, kPlayPassed},
         row(1, 230.0),
         1,
         "not good: 1 of 2 plays; dip (1 of 2): NOT OBSERVED",
         "NOT OBSERVED"},
        {{kPlayPassed, kPlayFailed},
         row(0, 230.0) + row(1, 230.0),
         1,
         "not good: 1 of 2 plays; dip (2 of 2): no expected values: the play is failed",
         "within"},
        {{kPlayPassed},
         row(0, 230.0) + row(1, 230.0),
         1,
         "not good: 1 of 2 plays; dip (2 of 2): no expected values: the play is not played",
         "within"},
        {{kPlayPassed, kPlayPassed}, "", 1, "not good: 2 of 2 plays", "NOT OBSERVED"},
    };
    for (const auto& it : rows) {
        const report::CaseAssessment assessed = judge(it.mPlays, it.mMeasured);
        EXPECT_EQ(assessed.bad(), it.mBad) << it.mVerdict;
        EXPECT_THAT(assessed.mVerdict, HasSubstr(it.mVerdict));
        EXPECT_EQ(assessed.mValues.back().mVerdict, it.mLast) << it.mVerdict;
    }
}

TEST_F(ExpectedTest, NightWithoutUsableExpectedValuesIsNotGood)
{
    expect(1, "");
    const std::string all = row(0, 230.0) + row(1, 230.0);
    EXPECT_EQ(judge({kPlayPassed, kPlayPassed}, all).bad(), 1U);
    QFile::remove(QString::fromStdString(mFiles.path("expected/dip-1.csv")));
    EXPECT_THAT(judge({kPlayPassed, kPlayPassed}, all).mVerdict,
                HasSubstr("there is no expected/dip-1.csv"));
}

/** It belongs to the judged journal, and to no later one. */
TEST_F(ExpectedTest, ReportFindsTheAssessment)
{
    report::NightAssessment assessment;
    assessment.mJournalBytes = 99;
    assessment.mLimits = "pq-a";
    assessment.mCases["dip"] = judge({kPlayPassed, kPlayPassed}, row(0, 230.0) + row(1, 231.0));
    writeAssessment(mFiles.path(""), assessment);
    report::NightSummary same = night({kPlayPassed, kPlayPassed});
    addAssessment(mFiles.path(""), 99, &same);
    EXPECT_EQ(same.mCases[0].mAssessment.mValues[0].mText,
              assessment.mCases["dip"].mValues[0].mText);
    EXPECT_EQ(same.badAssessments(), 1U);
    report::NightSummary later = night({kPlayPassed, kPlayPassed});
    addAssessment(mFiles.path(""), 100, &later);
    EXPECT_EQ(later.assessedCases(), 0U);
    EXPECT_THAT(later.mAssessmentProblem, HasSubstr("to an earlier state"));
    mFiles.make("assessment.json", "{\"journalBytes\": 100");
    addAssessment(mFiles.path(""), 100, &later);
    EXPECT_THAT(later.mAssessmentProblem, HasSubstr("was changed since judge wrote it"));
}

/** A recording is kept until it is measured. One without all samples of the play is not measured.
 */
TEST_F(ExpectedTest, UnmeasuredPlaysAreReported)
{
    const std::vector<PlayVerdict> verdicts = {kPlayPassed, kPlayPassed};
    const std::string all = row(0, 230.0) + row(1, 230.0);
    QFile::remove(QString::fromStdString(mFiles.path("expected/dip-0.csv")));
    record(0, 7200);
    const auto interrupted =
        expected::measurePlays(mFiles.path(""), night(verdicts), [] { return true; });
    EXPECT_EQ(interrupted.mLeft, 1U);
    EXPECT_EQ(filesOf("expected"), "dip-0.bin dip-1.csv");
    EXPECT_THAT(judge(verdicts, all).mVerdict,
                HasSubstr("there is no expected/dip-0.csv; run with --resume measures it"));

    record(0, 7000);
    const auto remarks =
        expected::measurePlays(mFiles.path(""), night(verdicts), [] { return false; }).mRemarks;
    EXPECT_THAT(remarks, ElementsAre(HasSubstr("dip (1 of 2): no expected values: ")));
    EXPECT_THAT(remarks.front(), HasSubstr("has 7199 of 7200 samples"));
    EXPECT_EQ(filesOf("expected"), "dip-0.bin dip-1.csv");
}

} // namespace
