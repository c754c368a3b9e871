#include "report/JunitFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>

#include "report/ReportText.h"

namespace report {

namespace {
constexpr char kNightSuite[] = "the night itself";

/** "2026-11-25T22:00:01": readers want it without a zone. */
std::string timestampOf(qint64 ns)
{
    std::string text = utcText(ns);
    return text.substr(0, text.find('.'));
}

std::string millisecondsText(qint64 ns)
{
    return fmt::format("{:.3f}", static_cast<double>(std::max<qint64>(ns, 0)) / 1e9);
}

/** XML has no place for control characters. */
std::string xmlText(std::string text)
{
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < ' ' && c != '\n' && c != '\t' ? ' ' : c;
    }
    return text;
}

void set(pugi::xml_node node, const char* name, const std::string& value)
{
    node.append_attribute(name) = xmlText(value).c_str();
}

/** One suite; its counts are known at the end. */
class Suite
{
public:
    Suite(pugi::xml_node root, const NightSummary& night, const std::string& name);

    /** @param timeNs that it took */
    void addTest(const std::string& name, qint64 timeNs);

    /** Of the last test: "failure" or "error". */
    void setResult(const char* element, const std::string& type, const std::string& message,
                   const std::vector<journal::FoundWrong>& found);
    void skip(const std::string& message);

    void finish();

private:
    std::string mClass;
    pugi::xml_node mSuite;
    pugi::xml_node mTest;
    int mTests = 0;
    int mFailures = 0;
    int mErrors = 0;
    int mSkipped = 0;
    qint64 mTimeNs = 0;
};

Suite::Suite(pugi::xml_node root, const NightSummary& night, const std::string& name)
    : mClass(night.mNight.mName + "." + name), mSuite(root.append_child("testsuite"))
{
    const auto count = std::distance(root.children().begin(), root.children().end());
    const bool hasBegun = !night.mSessions.empty();
    const auto host = night.mNight.mEnvironment.find("host");
    set(mSuite, "name", name);
    set(mSuite, "package", night.mNight.mName);
    set(mSuite, "id", std::to_string(count - 1));
    set(mSuite, "timestamp", timestampOf(hasBegun ? night.mSessions.front().mBeginNs : 0));
    set(mSuite, "hostname",
        host == night.mNight.mEnvironment.end() || host->second.empty() ? "localhost"
                                                                        : host->second);
    mSuite.append_child("properties");
}

void Suite::addTest(const std::string& name, qint64 timeNs)
{
    mTest = mSuite.append_child("testcase");
    set(mTest, "name", name);
    set(mTest, "classname", mClass);
    set(mTest, "time", millisecondsText(timeNs));
    ++mTests;
    mTimeNs += std::max<qint64>(timeNs, 0);
}

void Suite::setResult(const char* element, const std::string& type, const std::string& message,
                      const std::vector<journal::FoundWrong>& found)
{
    const pugi::xml_node result = mTest.append_child(element);
    set(result, "message", message);
    set(result, "type", type);
    std::string text;
    for (const journal::FoundWrong& it : found) {
        text +=
            (it.mStampNs ? utcText(*it.mStampNs) + " " : "") + it.mKind + ": " + it.mText + "\n";
    }
    result.text() = xmlText(text).c_str();
    ++(element == std::string("error") ? mErrors : mFailures);
}

void Suite::skip(const std::string& message)
{
    set(mTest.append_child("skipped"), "message", message);
    ++mSkipped;
}

void Suite::finish()
{
    set(mSuite, "tests", std::to_string(mTests));
    set(mSuite, "failures", std::to_string(mFailures));
    set(mSuite, "errors", std::to_string(mErrors));
    set(mSuite, "skipped", std::to_string(mSkipped));
    set(mSuite, "time", millisecondsText(mTimeNs));
    mSuite.append_child("system-out");
    mSuite.append_child("system-err");
}

void addPlay(const NightSummary& night, const PlaySummary& play, Suite* suite)
{
    const bool hasEnded = play.mBeginNs != 0 && play.mEndNs != 0;
    suite->addTest(playText(night, play), hasEnded ? play.mEndNs - play.mBeginNs : 0);
    switch (play.mOutcome) {
        case Outcome::Failed:
            suite->setResult("failure", play.mFound.empty() ? "failed" : play.mFound.front().mKind,
                             play.mFound.empty() ? "failed" : play.mFound.front().mText,
                             play.mFound);
            break;
        case Outcome::Unfinished:
            suite->setResult("error", "not finished", "the night ended while it was played", {});
            break;
        case Outcome::NotPlayed:
        case Outcome::NotObserved:
            suite->skip(nameOf(play.mOutcome));
            break;
        default:
            break;
    }
}

void addAssessment(const Assessment& assessment, Suite* suite)
{
    suite->addTest("measured: " + assessment.mName, 0);
    if (assessment.mGrade == Grade::Bad) {
        suite->setResult("failure", assessment.mVerdict, assessment.mText, {});
    } else if (assessment.mGrade == Grade::NotJudged) {
        suite->skip(assessment.mVerdict + ": " + assessment.mText);
    }
}

/** What no play has: findings outside of them, and a night that was not done. */
void addNight(const NightSummary& night, pugi::xml_node root)
{
    Suite suite(root, night, kNightSuite);
    suite.addTest("findings outside the plays", 0);
    if (!night.mOutside.empty()) {
        suite.setResult("failure", night.mOutside.front().mKind, night.mOutside.front().mText,
                        night.mOutside);
    }
    suite.addTest("every play was played", 0);
    const size_t played = night.mCounts.of(night.wanted()) + night.mCounts.of(Outcome::Failed);
    const bool isShort = played < night.mPlays.size() || night.mPlays.empty();
    if (isShort || (night.mState != NightState::Done && night.mState != NightState::FirstFailure)) {
        suite.setResult("error", "not done", verdictText(night), {});
    }
    suite.finish();
}
} // namespace

std::string junitFile(const NightSummary& night)
{
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    set(declaration, "version", "1.0");
    set(declaration, "encoding", "UTF-8");
    const pugi::xml_node root = document.append_child("testsuites");
    for (const CaseSummary& it : night.mCases) {
        Suite suite(root, night, it.mStaged.mName);
        for (const size_t play : it.mPlays) {
            addPlay(night, night.mPlays[play], &suite);
        }
        for (const Assessment& assessment : it.mAssessment.mValues) {
            addAssessment(assessment, &suite);
        }
        suite.finish();
    }
    addNight(night, root);
    std::ostringstream text;
    document.save(text, "  ");
    return text.str();
}

} // namespace report
