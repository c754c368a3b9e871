#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <pugixml.hpp>

#include "base/CaseError.h"
#include "report/CaseTable.h"
#include "report/HtmlPage.h"
#include "report/JunitFile.h"
#include "report/NightBar.h"
#include "report/NightSummary.h"
#include "report/ReportText.h"

using namespace report;
using journal::NightEnd;
using journal::PlayVerdict;

namespace {

constexpr qint64 kBeginNs = 1764108000'000000000;
constexpr qint64 kSecondNs = 1'000'000'000;

/** A night of two cases, "dip" twice and "swell" once, step by step. */
class Steps
{
public:
    explicit Steps(bool isObserved = true)
    {
        journal::NightBegin night;
        night.mName = "night";
        night.mIsObserved = isObserved;
        night.mCases = {{"dip", 1, "dip.csv", 7200, 1, 400'000'000, 2, "signal dip", {}},
                        {"swell", 2, "swell.csv", 3600, 1, 200'000'000, 1, "swell & <b>", {}}};
        night.mOrder = {0, 0, 1};
        night.mEnvironment = {{"clock", "<script>alert(1)</script>"}};
        add(night);
    }

    Steps& add(const journal::Step& step)
    {
        mEntries.push_back({kBeginNs + static_cast<qint64>(mEntries.size()) * kSecondNs, step});
        return *this;
    }

    Steps& begin(int play) { return add(journal::PlayBegin{play}); }
    Steps& end(int play, PlayVerdict verdict, quint64 findings = 0)
    {
        return add(journal::PlayEnd{play, verdict, kBeginNs + 5, kBeginNs + 6, 7200,
                                    10'000'000 * (play + 1), findings});
    }
    Steps& play(int play, PlayVerdict verdict) { return begin(play).end(play, verdict); }
    Steps& found(std::optional<int> play, const std::string& text = "9 samples are missing")
    {
        return add(journal::Finding{play, "missing", text, kBeginNs + 1, ""});
    }
    Steps& over(NightEnd::Reason reason) { return add(NightEnd{reason, "it died twice"}); }

    NightSummary summary() const { return summarize(mEntries); }

private:
    std::vector<journal::Entry> mEntries;
};

constexpr auto kPassed = PlayVerdict::Passed;
constexpr auto kFailed = PlayVerdict::Failed;
constexpr auto kAnswered = PlayVerdict::NotObserved;
constexpr auto kDone = NightEnd::Reason::Done;

struct NightCase
{
    const char* mName;
    Steps mSteps;
    int mStatus;
    const char* mVerdict;
    const char* mOutcomes; ///< a letter a play: p, o, - (not played), u (not finished), f
    int mSkipped;          ///< in JUnit, as the two below
    int mFailures;
    int mErrors;
};

std::vector<NightCase> nights()
{
    return {
        {"all good", Steps().play(0, kPassed).play(1, kPassed).play(2, kPassed).over(kDone), 0,
         "Passed: 3 plays of 2 cases", "ppp", 0, 0, 0},
        {"one failed", Steps().play(0, kPassed).play(1, kFailed).play(2, kPassed).over(kDone), 1,
         "Failed: 1 of 3 plays failed", "pfp", 0, 1, 0},
        {"passed with a finding",
         Steps().begin(0).found(0).end(0, kPassed).play(1, kPassed).play(2, kPassed).over(kDone), 1,
         "Failed: 1 of 3 plays failed", "fpp", 0, 1, 0},
        {"passed with an unlisted finding",
         Steps().begin(0).end(0, kPassed, 1).play(1, kPassed).play(2, kPassed).over(kDone), 1,
         "Failed: 1 of 3 plays failed", "fpp", 0, 1, 0},
        {"outside the plays",
         Steps().play(0, kPassed).play(1, kPassed).play(2, kPassed).found({}).over(kDone), 1,
         "Failed: 1 finding outside the plays", "ppp", 0, 1, 0},
        {"a play left out", Steps().play(0, kPassed).play(2, kPassed).over(kDone), 1,
         "Failed: 1 of 3 plays not played", "p-p", 1, 0, 1},
        {"nothing but the first line", Steps(), 1, "Cut off after 0 of 3 plays", "---", 3, 0, 1},
        {"cut off while it plays", Steps().play(0, kPassed).begin(1), 1,
         "Cut off after 1 of 3 plays", "pu-", 1, 0, 2},
        {"cut off after the last play", Steps().play(0, kPassed).play(1, kPassed).play(2, kPassed),
         1, "Cut off after 3 of 3 plays", "ppp", 0, 0, 1},
        {"interrupted", Steps().play(0, kFailed).begin(1).over(NightEnd::Reason::Interrupted), 130,
         "Interrupted after 1 of 3 plays: 1 failed", "fu-", 1, 1, 2},
        {"gave up", Steps().play(0, kFailed).play(1, kFailed).over(NightEnd::Reason::GaveUp), 1,
         "Gave up after 2 of 3 plays: 2 failed", "ff-", 1, 2, 1},
        {"went on and is good",
         Steps()
             .play(0, kPassed)
             .begin(1)
             .over(NightEnd::Reason::Interrupted)
             .add(journal::Resumed{})
             .play(1, kPassed)
             .play(2, kPassed)
             .over(kDone),
         0, "Passed: 3 plays of 2 cases", "ppp", 0, 0, 0},
        {"a finding in the attempt that was cut off",
         Steps()
             .begin(0)
             .found(0)
             .add(journal::Resumed{})
             .play(0, kPassed)
             .play(1, kPassed)
             .play(2, kPassed)
             .over(kDone),
         1, "Failed: 1 of 3 plays failed", "fpp", 0, 1, 0},
        {"until the first failure, in the second round",
         Steps()
             .play(0, kPassed)
             .play(1, kPassed)
             .play(2, kPassed)
             .play(3, kFailed)
             .over(NightEnd::Reason::FirstFailure),
         1, "Failed: 1 of 4 plays failed", "pppf", 0, 1, 0},
        {"until the first failure, in the first round",
         Steps().play(0, kFailed).over(NightEnd::Reason::FirstFailure), 1,
         "Failed: 1 of 1 play failed", "f", 0, 1, 0},
        {"device", Steps(false).play(0, kAnswered).play(1, kPassed).play(2, kAnswered).over(kDone),
         0, "Commanded, not observed: 3 plays commanded and answered", "ooo", 3, 0, 0},
        {"device, one failed",
         Steps(false).play(0, kAnswered).play(1, kFailed).play(2, kAnswered).over(kDone), 1,
         "Failed: 1 of 3 plays failed", "ofo", 2, 1, 0},
        {"at the desk, one not observed",
         Steps().play(0, kPassed).play(1, kAnswered).play(2, kPassed).over(kDone), 1,
         "Failed: 1 of 3 plays not observed", "pop", 1, 0, 1},
    };
}

std::string outcomesOf(const NightSummary& night)
{
    std::string letters;
    for (const PlaySummary& play : night.mPlays) {
        letters += "po-uf"[static_cast<size_t>(play.mOutcome)];
    }
    return letters;
}

/** Expects the number of an element in a JUnit file, also in the attributes of its suites. */
void expectCount(const pugi::xml_document& junit, const char* element, const char* attribute,
                 int expected)
{
    const std::string found = std::string("//testcase/") + element;
    EXPECT_EQ(junit.select_nodes(found.c_str()).size(), static_cast<size_t>(expected)) << element;
    int sum = 0;
    for (const pugi::xml_node suite : junit.child("testsuites").children("testsuite")) {
        sum += suite.attribute(attribute).as_int(-1000);
    }
    EXPECT_EQ(sum, expected) << attribute;
}

/** Every opened element is closed, in order, except for void elements. */
void expectBalanced(const std::string& page)
{
    std::vector<std::string> open;
    for (size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at + 1)) {
        const size_t end = page.find('>', at);
        ASSERT_NE(end, std::string::npos);
        const bool isClosing = page[at + 1] == '/';
        const size_t begin = at + (isClosing ? 2 : 1);
        const std::string name = page.substr(begin, page.find_first_of(" \n>/", begin) - begin);
        const bool isVoid = name == "meta" || name == "br" || name == "img" || name[0] == '!';
        if (isClosing) {
            ASSERT_FALSE(open.empty()) << name;
            ASSERT_EQ(open.back(), name);
            open.pop_back();
        } else if (!isVoid && page[end - 1] != '/') {
            open.push_back(name);
        }
    }
    EXPECT_TRUE(open.empty());
}

/** A night with plays of one case, 1 s each; with failures, each seventh fails. */
NightSummary longNight(int plays, bool hasFailures)
{
    journal::NightBegin night;
    night.mCases = {{"dip", 1, "dip.csv", 7200, 1, 400'000'000, plays, "signal dip", {}}};
    night.mOrder.assign(static_cast<size_t>(plays), 0);
    std::vector<journal::Entry> entries = {{kBeginNs, night}};
    for (int play = 0; play < plays; ++play) {
        const auto verdict =
            hasFailures && play % 7 == 3 ? PlayVerdict::Failed : PlayVerdict::Passed;
        entries.push_back({kBeginNs + play * kSecondNs, journal::PlayBegin{play}});
        entries.push_back(
            {kBeginNs + (play + 1) * kSecondNs, journal::PlayEnd{play, verdict, 1, 2, 3, 4, 0}});
    }
    return summarize(entries);
}

size_t countOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(ReportTest, AllReportsOfANightHaveTheSameVerdict)
{
    for (const NightCase& it : nights()) {
        SCOPED_TRACE(it.mName);
        const NightSummary night = it.mSteps.summary();
        EXPECT_EQ(statusOf(night), it.mStatus);
        EXPECT_EQ(verdictText(night), it.mVerdict);
        EXPECT_EQ(outcomesOf(night), it.mOutcomes);

        pugi::xml_document junit;
        ASSERT_TRUE(junit.load_string(junitFile(night).c_str()));
        expectCount(junit, "skipped", "skipped", it.mSkipped);
        expectCount(junit, "failure", "failures", it.mFailures);
        expectCount(junit, "error", "errors", it.mErrors);
        EXPECT_EQ(it.mFailures + it.mErrors == 0, it.mStatus == 0);

        const std::string table = caseTable(night);
        EXPECT_EQ(static_cast<size_t>(std::count(table.begin(), table.end(), '\n')),
                  night.mPlays.size() + 1);

        Pictures pictures;
        pictures.mCases.resize(night.mCases.size(), {"", "no pen"});
        const std::string page = htmlPage(night, pictures);
        EXPECT_NE(page.find(std::string("<title>") + it.mVerdict), std::string::npos);
        const size_t firstLine = page.find("<body>\n<main>\n<h1 ");
        EXPECT_LT(page.find(it.mVerdict, firstLine), page.find("</h1>"));
        expectBalanced(page);
    }
}

TEST(ReportTest, EmptyJournalIsACutOffNight)
{
    const NightSummary night = summarize({});
    EXPECT_EQ(statusOf(night), 1);
    EXPECT_EQ(verdictText(night), "Cut off after 0 of 0 plays");
    EXPECT_NE(htmlPage(night, {}).find("cut off"), std::string::npos);
    EXPECT_NE(junitFile(night).find("<error"), std::string::npos);
}

TEST(ReportTest, NumbersMatchTheJournal)
{
    const NightSummary night = Steps()
                                   .add(journal::ProgramStarted{1})
                                   .play(0, kPassed)
                                   .begin(1)
                                   .found(1)
                                   .add(journal::ProgramEnded{1, "killed by signal 9"})
                                   .end(1, kFailed, 3)
                                   .add(journal::ProgramStarted{2})
                                   .play(2, kPassed)
                                   .add(journal::ProgramEnded{2, ""})
                                   .over(kDone)
                                   .summary();
    EXPECT_EQ(night.mFindings, 3U);
    EXPECT_EQ(night.mSamples, 3U * 7200U);
    EXPECT_EQ(night.mProgramRuns, 2U);
    EXPECT_EQ(night.mDeaths.size(), 1U);
    ASSERT_TRUE(night.mDelays && night.mCases[0].mDelays);
    EXPECT_EQ(night.mDelays->mMinNs, 10'000'000);
    EXPECT_EQ(night.mDelays->mMedianNs, 20'000'000);
    EXPECT_EQ(night.mDelays->mMaxNs, 30'000'000);
    EXPECT_EQ(night.mCases[0].mDelays->mMaxNs, 20'000'000);
    EXPECT_EQ(night.mCases[0].mOutcome, Outcome::Failed);
    EXPECT_EQ(night.mCases[1].mOutcome, Outcome::Passed);
    EXPECT_EQ(playText(night, night.mPlays[1]), "dip (2 of 2)");
    EXPECT_EQ(caseTable(night).substr(0, caseTable(night).find("dip,2")),
              "case,repetition,number,verdict,first_utc,last_utc,samples,delay_s,findings,what\n"
              "dip,1,1,passed,2025-11-25T22:00:00.000000005Z,2025-11-25T22:00:00.000000006Z,7200,"
              "0.010000000,0,\n");
}

TEST(ReportTest, TextsAreEscapedInEveryReport)
{
    const std::string nasty = "\"<script>\" & 'more',\x01\nend";
    const NightSummary night = Steps().begin(0).found(0, nasty).end(0, kFailed).summary();
    Pictures pictures;
    pictures.mCases = {{"<svg/>", ""}, {"", "no <gnuplot>"}};
    const std::string page = htmlPage(night, pictures);
    EXPECT_EQ(page.find("<script"), std::string::npos);
    EXPECT_EQ(page.find("<gnuplot>"), std::string::npos);
    EXPECT_EQ(page.find("<b>"), page.find("<b></b>"));
    EXPECT_NE(page.find("around 1 finding, which were not kept"), std::string::npos);
    EXPECT_NE(page.find("data:image/svg+xml;base64,PHN2Zy8+"), std::string::npos);
    pugi::xml_document junit;
    ASSERT_TRUE(junit.load_string(junitFile(night).c_str()));
    EXPECT_STREQ(junit.select_node("//failure/@message").attribute().value(),
                 "\"<script>\" & 'more', \nend");
    EXPECT_NE(caseTable(night).find(",\"\"\"<script>\"\" & 'more',\x01\nend\"\n"),
              std::string::npos);
}

TEST(ReportTest, LongNightsStayReadable)
{
    Pictures pictures;
    pictures.mCases.resize(1);
    const std::string page = htmlPage(longNight(2000, true), pictures);
    EXPECT_EQ(countOf(page, "<span class=\"failed\">"), 200U);
    EXPECT_EQ(countOf(page, "<span class=\"passed\">"), 200U);
    EXPECT_NE(page.find("1600 more plays: see cases.csv"), std::string::npos);
    EXPECT_NE(page.find("236 more plays failed"), std::string::npos);
    EXPECT_LT(page.size(), 300'000U);
    expectBalanced(page);
}

TEST(ReportTest, BarShowsEveryFailure)
{
    // Adjacent parts are joined.
    EXPECT_EQ(countOf(nightBar(longNight(2000, false)), "<rect class=\"passed\""), 1U);

    const std::string bar = nightBar(longNight(2000, true));
    EXPECT_EQ(countOf(bar, "<rect class=\"failed\""), 286U);
    EXPECT_EQ(countOf(bar, "width=\"3.0\" height=\"40\""), 286U);
    EXPECT_LT(bar.rfind("<rect class=\"passed\""), bar.find("<rect class=\"failed\""));
    EXPECT_NE(bar.find("failed: 286 plays"), std::string::npos);
    EXPECT_NE(bar.find("left:30.00%\">22:10<"), std::string::npos);
    EXPECT_EQ(nightBar(summarize({})), "");
}

TEST(ReportTest, ResumedNightReportsItsStopAndWhatChanged)
{
    const NightSummary night = Steps()
                                   .play(0, kPassed)
                                   .begin(1)
                                   .add(journal::Resumed{{{"clock", "not synchronized"}}})
                                   .play(1, kPassed)
                                   .play(2, kPassed)
                                   .over(kDone)
                                   .summary();
    Pictures pictures;
    pictures.mCases.resize(2);
    const std::string page = htmlPage(night, pictures);
    EXPECT_NE(
        page.find(
            "From 2025-11-25 22:00:03 to 2025-11-25 22:00:04 UTC (1 s): the night had stopped"),
        std::string::npos);
    EXPECT_NE(page.find("<h3>From 2025-11-25 22:00:04 UTC on</h3>"), std::string::npos);
    EXPECT_NE(page.find("not synchronized"), std::string::npos);
    EXPECT_EQ(night.mPlays[1].mAttempts, 2);
}

TEST(ReportTest, MeasuredValuesCountToo)
{
    NightSummary night =
        Steps().play(0, kPassed).play(1, kPassed).play(2, kPassed).over(kDone).summary();
    std::vector<Assessment>& values = night.mCases[0].mAssessment.mValues;
    night.mCases[0].mAssessment.mVerdict = "good";
    values = {{"rms-half UA", "within", "0.02 % of 0.1 %", Grade::Good},
              {"u2 U", "no limit", "", Grade::NotJudged}};
    EXPECT_EQ(statusOf(night), 0);
    values.push_back({"phasor UA", "BEYOND", "1.2 % > 1 %", Grade::Bad});
    EXPECT_EQ(statusOf(night), 1);
    EXPECT_EQ(verdictText(night), "Failed: 1 measured result not good");
    Pictures pictures;
    pictures.mCases.resize(night.mCases.size());
    EXPECT_NE(htmlPage(night, pictures).find("1.2 % &gt; 1 %"), std::string::npos);
    pugi::xml_document junit;
    ASSERT_TRUE(junit.load_string(junitFile(night).c_str()));
    expectCount(junit, "failure", "failures", 1);
    expectCount(junit, "skipped", "skipped", 1);

    night.mCases[0].mAssessment = {};
    night.mAssessmentProblem = "judge the night again";
    EXPECT_EQ(statusOf(night), 1);
    EXPECT_EQ(verdictText(night), "Failed: judge the night again");
    ASSERT_TRUE(junit.load_string(junitFile(night).c_str()));
    expectCount(junit, "error", "errors", 1);
}

TEST(ReportTest, RejectsImpossibleNights)
{
    const std::vector<std::vector<journal::Entry>> wrong = {
        {{0, journal::PlayBegin{0}}},
        {{0, journal::NightBegin{}}, {1, journal::PlayBegin{0}}},
        {{0, journal::NightBegin{}}, {1, journal::NightBegin{}}},
    };
    for (const auto& entries : wrong) {
        EXPECT_THROW(summarize(entries), base::CaseError);
    }
    for (const int play : {-1, 2'000'000'000}) {
        EXPECT_THROW(Steps().begin(play).summary(), base::CaseError) << play;
    }
}

TEST(ReportTest, TimesAreReadable)
{
    EXPECT_EQ(utcText(-1), "1969-12-31T23:59:59.999999999Z");
    const std::pair<qint64, const char*> durations[] = {
        {0, "0 s"},
        {55'555, "55.6 µs"},
        {999'950'000, "1 s"},
        {41'700'000, "41.7 ms"},
        {59 * kSecondNs, "59 s"},
        {61 * kSecondNs, "1 min 1 s"},
        {33'120 * kSecondNs, "9 h 12 min"},
    };
    for (const auto& [ns, text] : durations) {
        EXPECT_EQ(durationText(ns), text);
    }
    EXPECT_EQ(groupedText(999), "999");
    EXPECT_EQ(groupedText(1'234'567), "1,234,567");
}

} // namespace
