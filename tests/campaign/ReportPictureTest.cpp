#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "CommandRunner.h"
#include "ReadSignal.h"
#include "Records.h"
#include "journal/Journal.h"
#include "journal/JournalWriter.h"
#include "report/CompactSvg.h"
#include "report/FindingPicture.h"
#include "report/Report.h"
#include "report/ReportText.h"
#include "report/ThinnedCurves.h"

using namespace report;

namespace {

constexpr qint64 kRecordStepNs = 55'555; ///< at 50 Hz
constexpr qint64 kFirstNs = 1764108010'000000000;
constexpr qint64 kPeriodSamples = 360;
constexpr qint64 kCaseSamples = 4 * kPeriodSamples; ///< one period, four times
constexpr qint64 kLastNs = kFirstNs + (kCaseSamples - 1) * kRecordStepNs;

/** A period whose first channel counts up from a number. */
std::string periodFrom(int first)
{
    std::string lines;
    for (int i = 0; i < kPeriodSamples; ++i) {
        lines += "0;0;0;0;50;" + std::to_string(first + i) + ";0;0;0;0;0;0;0\n";
    }
    return lines;
}

SampleRecord recordAt(qint64 stampNs, qint32 value)
{
    SampleRecord record{};
    record.mSeconds = static_cast<quint32>(stampNs / kSecond);
    record.mNanoseconds = static_cast<quint32>(stampNs % kSecond);
    record.mValues[0] = value;
    return record;
}
} // namespace

/** The folder of a night with one play of one case: 1,000 and up steady, 5,000 and up played. */
class ReportPictureTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(QString::fromStdString(mFiles.path(""))).mkpath("stage"));
        mFiles.make("stage/steady.csv", periodFrom(1000));
        mFiles.make("stage/dip.csv", periodFrom(5000));
        mFiles.make("stage/cases.conf", "0,1,steady.csv\n1,4,dip.csv\n");
    }

    /** @param findings of the play */
    static std::vector<journal::Entry> entries(const std::vector<journal::Finding>& findings = {})
    {
        journal::NightBegin night;
        night.mName = "night";
        night.mGapNs = kSecond;
        night.mCases = {{"dip", 1, "dip.csv", kCaseSamples, 4, 80'000'000, 1, "file", {}}};
        night.mOrder = {0};
        std::vector<journal::Entry> entries = {{1, night}, {2, journal::PlayBegin{0}}};
        for (const journal::Finding& finding : findings) {
            entries.push_back({3, finding});
        }
        const auto verdict =
            findings.empty() ? journal::PlayVerdict::Passed : journal::PlayVerdict::Failed;
        entries.push_back({4, journal::PlayEnd{0, verdict, kFirstNs, kLastNs, kCaseSamples, 1000,
                                               findings.size()}});
        entries.push_back({5, journal::NightEnd{}});
        return entries;
    }

    std::string journalOf(const std::vector<journal::Entry>& entries) const
    {
        std::string text;
        for (const journal::Entry& entry : entries) {
            text += lineOf(entry) + "\n";
        }
        return text;
    }

    TestFiles mFiles;
    const NightSummary mNight = summarize(entries());
    ExpectedSamples mExpected{mFiles.path("")};
};

TEST_F(ReportPictureTest, ExpectedSamplesAreKnownAtEveryTimeStamp)
{
    struct Row
    {
        const char* mWhere;
        qint64 mFromNs;
        std::vector<int> mValues; ///< one a step
    };
    const Row rows[] = {
        {"up to its first sample", kFirstNs - 2 * kRecordStepNs, {1358, 1359, 5000, 5001}},
        {"a period before it", kFirstNs - 361 * kRecordStepNs, {1359, 1000, 1001}},
        {"where its file is repeated", kFirstNs + 359 * kRecordStepNs, {5359, 5000, 5001}},
        {"after its last sample", kLastNs - kRecordStepNs, {5358, 5359, 1000, 1001}},
        {"a period after it", kLastNs + 360 * kRecordStepNs, {1359, 1000}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.mWhere);
        const auto count = static_cast<qint64>(row.mValues.size());
        const std::vector<ExpectedSample> samples = mExpected.around(
            mNight, mNight.mPlays[0], row.mFromNs, row.mFromNs + (count - 1) * kRecordStepNs);
        ASSERT_EQ(samples.size(), row.mValues.size());
        for (size_t i = 0; i < samples.size(); ++i) {
            EXPECT_EQ(samples[i].mStampNs, row.mFromNs + static_cast<qint64>(i) * kRecordStepNs);
            EXPECT_EQ((*samples[i].mContent)[2], static_cast<quint32>(row.mValues[i]));
        }
    }
    // The rest of an interrupted play is expected, too.
    PlaySummary shortened = mNight.mPlays[0];
    shortened.mLastStampNs = kFirstNs + 5 * kRecordStepNs;
    const auto rest =
        mExpected.around(mNight, shortened, kLastNs - kRecordStepNs, kLastNs + kRecordStepNs);
    ASSERT_EQ(rest.size(), 3U);
    EXPECT_EQ((*rest[1].mContent)[2], 5359U);
    EXPECT_EQ((*rest[2].mContent)[2], 1000U);
    // No expected samples at times at which another play may have been in progress.
    const std::string error = errorOf([this] {
        mExpected.around(mNight, mNight.mPlays[0], kLastNs + 2 * kSecond, kLastNs + 3 * kSecond);
    });
    EXPECT_EQ(error, "another play may have been in progress");
}

TEST_F(ReportPictureTest, ArrivedSamplesAreDrawnOverExpectedOnes)
{
    std::string kept;
    const auto keep = [&kept](qint64 sample, qint32 value) {
        const SampleRecord record = recordAt(kFirstNs + sample * kRecordStepNs, value);
        kept.append(reinterpret_cast<const char*>(&record), sizeof(record));
    };
    for (const qint64 sample : {10, 11, 12, 16, 17}) {
        keep(sample, 5000 + static_cast<qint32>(sample));
    }
    mFiles.make("kept.bin", kept);
    const journal::Finding finding{0, "missing", "3 samples", kFirstNs + 16 * kRecordStepNs,
                                   "kept.bin"};
    const plot::Picture picture =
        findingPicture(mFiles.path(""), mNight, mNight.mPlays.data(), finding, &mExpected);

    ASSERT_EQ(picture.mWhole.size(), 2U);
    ASSERT_EQ(picture.mWhole[0].mCurves.size(), 8U);
    const plot::Curve& expected = picture.mWhole[0].mCurves[0];
    const plot::Curve& arrived = picture.mWhole[0].mCurves[4];
    EXPECT_TRUE(expected.mIsSecond);
    EXPECT_FALSE(arrived.mIsSecond);
    EXPECT_EQ(expected.mPoints.size(), 8U);
    ASSERT_EQ(arrived.mPoints.size(), 6U); // a gap is a point without a value
    EXPECT_DOUBLE_EQ(arrived.mPoints[2].mY, 5.012);
    EXPECT_TRUE(std::isnan(arrived.mPoints[3].mY));
    EXPECT_DOUBLE_EQ(arrived.mPoints[4].mX, 6 * kRecordStepNs * 1e-9);
    ASSERT_EQ(picture.mCommands.size(), 1U);
    EXPECT_DOUBLE_EQ(picture.mCommands[0].mSeconds, 6 * kRecordStepNs * 1e-9);

    const plot::Picture outside =
        findingPicture(mFiles.path(""), mNight, nullptr, finding, &mExpected);
    EXPECT_EQ(outside.mWhole[0].mCurves.size(), 4U);
    EXPECT_NE(outside.mCaption.find("not drawn"), std::string::npos);
}

TEST_F(ReportPictureTest, ReportsAreWrittenWithoutPictures)
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    const journal::Finding finding{0, "died", "by 9", std::nullopt, "kept/lost.bin"};
    mFiles.make("journal.jsonl", journalOf(entries({finding})));
    const NightSummary night = writeReports(mFiles.path(""));
    qputenv("PATH", path);
    EXPECT_EQ(statusOf(night), 1);
    const std::string page = readFile(mFiles.path("report.html"));
    EXPECT_NE(page.find("No picture of dip: gnuplot draws the picture, and it does not start"),
              std::string::npos);
    EXPECT_NE(page.find("kept/lost.bin"), std::string::npos);
    EXPECT_NE(page.find("Missing pictures: dip"), std::string::npos);
    EXPECT_EQ(page.find("<img"), std::string::npos);
    EXPECT_NE(readFile(mFiles.path("junit.xml")).find("<failure"), std::string::npos);
    EXPECT_NE(readFile(mFiles.path("cases.csv")).find("dip,1,1,failed,"), std::string::npos);
}

TEST_F(ReportPictureTest, NightIsGoodOnlyWithTheLastByteOfItsJournal)
{
    const std::string text = journalOf(entries());
    for (size_t cut = 0; cut <= text.size(); ++cut) {
        mFiles.make("cut.jsonl", text.substr(0, cut));
        const NightSummary night =
            summarize(journal::readJournal(mFiles.path("cut.jsonl")).mEntries);
        EXPECT_EQ(night.isGood(), cut == text.size()) << cut;
        EXPECT_EQ(verdictText(night).rfind("Cut off", 0) == 0, cut < text.size()) << cut;
    }
}

TEST_F(ReportPictureTest, ExitStatusFollowsTheVerdict)
{
    std::vector<journal::Entry> good = entries();
    const std::vector<journal::Entry> cut(good.begin(), good.end() - 1);
    std::vector<journal::Entry> interrupted = cut;
    interrupted.push_back({9, journal::NightEnd{journal::NightEnd::Reason::Interrupted, ""}});
    const std::tuple<std::string, int, const char*> rows[] = {
        {journalOf(good), 0, "Passed: 1 play of 1 case\n"},
        {journalOf(cut), 1, "Cut off after 1 of 1 play\n"},
        {journalOf(interrupted), 130, "Interrupted after 1 of 1 play\n"},
        {"", 1, "Cut off after 0 of 0 plays\n"},
        {"no journal\n{}\n", 1, ""},
    };
    const CommandRunner runner;
    for (const auto& [text, status, line] : rows) {
        mFiles.make("journal.jsonl", text);
        const CommandResult result = runner.run({VX_CAMPAIGN, "report", mFiles.path("")});
        EXPECT_EQ(result.mExitCode, status) << result;
        EXPECT_EQ(result.mOutput.substr(0, result.mOutput.find('\n') + 1), line) << result;
    }
    EXPECT_EQ(runner.run({VX_CAMPAIGN, "report", mFiles.path("stage")}).mExitCode, 2);
    mFiles.make("journal.jsonl", journalOf(cut));
    const size_t bytes = journalOf(cut).size();
    const journal::JournalWriter writer(mFiles.path("journal.jsonl"), bytes, bytes);
    const CommandResult running = runner.run({VX_CAMPAIGN, "report", mFiles.path("")});
    EXPECT_EQ(running.mExitCode, 1) << running;
    EXPECT_THAT(running.mOutput, testing::StartsWith("Still running after 1 of 1 play\n"));
}

TEST(ReportSizeTest, ThinnedCurvesStayWithinTheTolerance)
{
    plot::Picture picture;
    picture.mWhole = {{"V", -1.0, 1.0, {{"U", 0, false, {}}}}};
    std::vector<plot::Point>& points = picture.mWhole[0].mCurves[0].mPoints;
    for (int i = 0; i <= 2000; ++i) {
        points.push_back({i / 2000.0, i == 1200  ? std::numeric_limits<double>::quiet_NaN()
                                      : i < 1000 ? std::sin(i / 50.0)
                                                 : -0.5});
    }
    const std::vector<plot::Point> all = points;
    thinCurves(&picture);
    EXPECT_LT(points.size(), 300U);
    size_t next = 1;
    int gaps = 0;
    for (const plot::Point& point : all) {
        while (next + 1 < points.size() && points[next].mX < point.mX) {
            ++next;
        }
        const plot::Point& left = points[next - 1];
        const plot::Point& right = points[next];
        const double share = (point.mX - left.mX) / (right.mX - left.mX);
        const double y = left.mY + share * (right.mY - left.mY);
        gaps += std::isnan(y) ? 1 : 0;
        EXPECT_FALSE(std::abs(y - point.mY) > 0.00201) << point.mX;
    }
    EXPECT_GT(gaps, 0);
    EXPECT_LT(gaps, 4);
}

TEST(ReportSizeTest, CompactSvgHasTheSameLinesAndTexts)
{
    const std::string usual =
        R"(<g fill="none" color="black" stroke="currentColor" stroke-width="1.00")"
        R"( stroke-linecap="butt" stroke-linejoin="miter">)";
    const std::string svg = R"(<svg width="1"><g id="c"><rect fill="#fff"/>)" + usual +
                            "\n<path d='M0,0 L1,1'/></g>\n" + usual + "\n</g>\n" + usual +
                            "<g fill=\"red\"><text>a <tspan> </tspan></text></g></g>" + usual +
                            "<g><text></text></g></g></g></svg>";
    EXPECT_EQ(compactSvg(svg),
              R"(<svg width="1"><g id="c" fill="none" color="black" stroke="currentColor" )"
              R"(stroke-width="1.00" stroke-linecap="butt" stroke-linejoin="miter">)"
              R"(<rect fill="#fff" stroke="none"/><g><path d="M0,0 L1,1"/></g>)"
              R"(<g><g fill="red"><text>a <tspan> </tspan></text></g></g></g></svg>)");
    EXPECT_EQ(compactSvg("no picture <"), "no picture <");
}
