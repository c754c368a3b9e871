#include "report/JunitFile.h"

#include <algorithm>

#include "base/JunitFile.h"
#include "report/ReportText.h"

namespace report {

namespace {
constexpr char kNightSuite[] = "the night itself";

/** "2026-11-25T22:00:01": JUnit readers expect no zone. */
std::string timestampOf(qint64 ns)
{
    std::string text = utcText(ns);
    return text.substr(0, text.find('.'));
}

std::string textOf(const std::vector<journal::Finding>& findings)
{
    std::string text;
    for (const journal::Finding& it : findings) {
        text +=
            (it.mStampNs ? utcText(*it.mStampNs) + " " : "") + it.mKind + ": " + it.mText + "\n";
    }
    return text;
}

/** A suite of the night, and the class name of its tests. */
class Suite
{
public:
    Suite(base::JunitFile& file, const NightSummary& night, const std::string& name)
        : mClass(night.mNight.mName + "." + name), mSuite(addTo(file, night, name))
    {
    }

    /** @param timeNs duration of the test */
    base::JunitSuite& addTest(const std::string& name, qint64 timeNs = 0)
    {
        mSuite.addTest(name, mClass, static_cast<double>(std::max<qint64>(timeNs, 0)) / 1e9);
        return mSuite;
    }

private:
    static base::JunitSuite addTo(base::JunitFile& file, const NightSummary& night,
                                  const std::string& name)
    {
        const auto host = night.mNight.mEnvironment.find("host");
        const bool hasHost = host != night.mNight.mEnvironment.end() && !host->second.empty();
        const qint64 beginNs = night.mSessions.empty() ? 0 : night.mSessions.front().mBeginNs;
        return file.addSuite(name, night.mNight.mName, timestampOf(beginNs),
                             hasHost ? host->second : "localhost");
    }

    std::string mClass;
    base::JunitSuite mSuite;
};

void addPlay(const NightSummary& night, const PlaySummary& play, Suite& suite)
{
    const bool hasEnded = play.mBeginNs != 0 && play.mEndNs != 0;
    base::JunitSuite& test =
        suite.addTest(playText(night, play), hasEnded ? play.mEndNs - play.mBeginNs : 0);
    switch (play.mOutcome) {
        case Outcome::Failed:
            test.fail(play.mListedFindings.empty() ? "failed" : play.mListedFindings.front().mKind,
                      play.mListedFindings.empty() ? "failed" : play.mListedFindings.front().mText,
                      textOf(play.mListedFindings));
            break;
        case Outcome::Unfinished:
            test.failToRun("not finished", "the night ended while it was played", "");
            break;
        case Outcome::NotPlayed:
        case Outcome::NotObserved:
            test.skip(nameOf(play.mOutcome));
            break;
        default:
            break;
    }
}

void addAssessment(const Assessment& assessment, Suite& suite)
{
    base::JunitSuite& test = suite.addTest("measured: " + assessment.mName);
    if (assessment.mGrade == Grade::Bad) {
        test.fail(assessment.mVerdict, assessment.mText, "");
    } else if (assessment.mGrade == Grade::NotJudged) {
        test.skip(assessment.mVerdict + ": " + assessment.mText);
    }
}

/**
 * Adds what belongs to no play: findings outside the plays, and a night that did not run to its
 * end.
 */
void addNight(const NightSummary& night, base::JunitFile& file)
{
    Suite suite(file, night, kNightSuite);
    base::JunitSuite& outside = suite.addTest("findings outside the plays");
    if (!night.mOutside.empty()) {
        outside.fail(night.mOutside.front().mKind, night.mOutside.front().mText,
                     textOf(night.mOutside));
    }
    if (!night.mAssessmentProblem.empty()) {
        suite.addTest("measured values").failToRun("not judged", night.mAssessmentProblem, "");
    }
    base::JunitSuite& whole = suite.addTest("every play was played");
    const size_t played = night.mCounts.of(night.wanted()) + night.mCounts.of(Outcome::Failed);
    const bool isShort = played < night.mPlays.size() || night.mPlays.empty();
    if (isShort || (night.mState != NightState::Done && night.mState != NightState::FirstFailure)) {
        whole.failToRun("not done", verdictText(night), "");
    }
}
} // namespace

std::string junitFile(const NightSummary& night)
{
    base::JunitFile file;
    for (const CaseSummary& it : night.mCases) {
        Suite suite(file, night, it.mStaged.mName);
        for (const size_t play : it.mPlays) {
            addPlay(night, night.mPlays[play], suite);
        }
        for (const Assessment& assessment : it.mAssessment.mValues) {
            addAssessment(assessment, suite);
        }
    }
    addNight(night, file);
    return file.text();
}

} // namespace report
