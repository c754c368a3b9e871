#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "report/HtmlParts.h"
#include "report/HtmlText.h"
#include "report/ReportText.h"

namespace report {

namespace {
/** Max number of good plays, and of other plays, that are listed for a case. */
constexpr size_t kMaxListedPlays = 200;

/** Max number of names of plays that were not played or not finished. */
constexpr size_t kMaxNamedPlays = 20;

constexpr char kCasesHead[] =
    "<table>\n<thead><tr><th scope=\"col\">Case</th><th scope=\"col\">Verdict</th>"
    "<th scope=\"col\" class=\"number\">Plays</th>"
    "<th scope=\"col\" class=\"number\">Delay, median</th>"
    "<th scope=\"col\" class=\"number\">Samples per play</th>"
    "<th scope=\"col\" class=\"number\">Findings</th></tr></thead>\n<tbody>\n";

constexpr char kPlaysHead[] =
    "<table class=\"plays\">\n<thead><tr><th scope=\"col\">Play</th><th scope=\"col\">Verdict</th>"
    "<th scope=\"col\">First and last time stamp, UTC</th>"
    "<th scope=\"col\" class=\"number\">Samples</th>"
    "<th scope=\"col\" class=\"number\">Delay</th>"
    "<th scope=\"col\" class=\"number\">Findings</th></tr></thead>\n<tbody>\n";

constexpr char kMeasuredHead[] =
    "<table class=\"plays\">\n<thead><tr><th scope=\"col\">Measured</th>"
    "<th scope=\"col\">Verdict</th><th scope=\"col\">Largest error</th></tr></thead>\n<tbody>\n";

const char* styleOf(Grade grade)
{
    return grade == Grade::Good ? "passed" : grade == Grade::Bad ? "failed" : "not-observed";
}

/** The result of the measured values, shown below the verdict of a case. */
std::string measuredText(const CaseAssessment& it)
{
    if (!it.isThere()) {
        return "";
    }
    const size_t bad = it.bad();
    return fmt::format("<small class=\"{}\">measured: {}</small>", bad == 0 ? "passed" : "failed",
                       bad == 0 ? "good" : fmt::format("{} not good", bad));
}

std::string numberCell(const char* label, const std::string& value)
{
    return fmt::format("<td class=\"number\" data-label=\"{}\"><span>{}</span></td>", label, value);
}

std::string stampsText(const PlaySummary& play)
{
    return play.mFirstStampNs == 0
               ? "-"
               : utcText(play.mFirstStampNs) + "<br>" + utcText(play.mLastStampNs);
}

std::string playRow(const NightSummary& night, const PlaySummary& play)
{
    return fmt::format(
        "<tr><th scope=\"row\">{}</th>"
        "<td data-label=\"Verdict\"><span class=\"{}\">{}</span></td>"
        "<td data-label=\"Time stamps\"><span>{}</span></td>{}{}{}</tr>\n",
        htmlText(playText(night, play)), styleOf(play.mOutcome), nameOf(play.mOutcome),
        stampsText(play), numberCell("Samples", groupedText(play.mSamples)),
        numberCell("Delay", play.mDelayNs ? durationText(*play.mDelayNs) : "-"),
        numberCell("Findings", std::to_string(play.mFindings)));
}

std::string caseRow(const NightSummary& night, const CaseSummary& it)
{
    return fmt::format(
        "<tr><th scope=\"row\">{}<small>{}</small></th><td "
        "data-label=\"Verdict\"><span>{}{}</span></td>{}{}{}{}</tr>\n",
        htmlText(it.mStaged.mName), htmlText(it.mStaged.mSource), outcomeMark(it.mOutcome),
        measuredText(it.mAssessment),
        numberCell("Plays",
                   fmt::format("{} of {}", it.mCounts.of(night.wanted()), it.mPlays.size())),
        numberCell("Delay", delayText(it.mDelays)),
        numberCell("Samples", fmt::format("{} <small>{}</small>", groupedText(it.mStaged.mSamples),
                                          durationText(it.mStaged.mDurationNs))),
        numberCell("Findings", std::to_string(it.mFindings)));
}

std::string playsTable(const NightSummary& night, const CaseSummary& it)
{
    std::string rows;
    size_t good = 0;
    size_t bad = 0;
    for (const size_t index : it.mPlays) {
        const PlaySummary& play = night.mPlays[index];
        size_t& count = play.mOutcome == night.wanted() ? good : bad;
        if (count++ < kMaxListedPlays) {
            rows += playRow(night, play);
        }
    }
    const size_t left =
        it.mPlays.size() - std::min(good, kMaxListedPlays) - std::min(bad, kMaxListedPlays);
    return kPlaysHead + rows + "</tbody></table>\n" +
           (left > 0 ? fmt::format("<p class=\"muted\">{}: see cases.csv.</p>\n",
                                   countText(left, "more play"))
                     : "");
}

std::string assessmentsTable(const CaseSummary& it)
{
    if (!it.mAssessment.isThere()) {
        return "";
    }
    std::string rows;
    for (const Assessment& assessment : it.mAssessment.mValues) {
        rows += fmt::format(
            "<tr><th scope=\"row\">{}</th>"
            "<td data-label=\"Verdict\"><span class=\"{}\">{}</span></td>"
            "<td data-label=\"Largest error\"><span>{}</span></td></tr>\n",
            htmlText(assessment.mName), styleOf(assessment.mGrade), htmlText(assessment.mVerdict),
            htmlText(assessment.mText));
    }
    std::string remarks;
    for (const std::string& remark : it.mAssessment.mRemarks) {
        remarks += "<li>" + htmlText(remark) + "</li>\n";
    }
    return kMeasuredHead + rows + "</tbody></table>\n" +
           (remarks.empty() ? "" : "<ul>\n" + remarks + "</ul>\n");
}

/** The text of the line that unfolds the details; it says what they are. */
std::string summaryOf(const CaseSummary& it)
{
    const bool isMeasured = it.mAssessment.isThere();
    return fmt::format("Picture of {}, and {} (number {}){}", htmlText(it.mStaged.mName),
                       countText(it.mPlays.size(), "play"), it.mStaged.mNumber,
                       isMeasured ? ", and measured values" : "");
}

/** A row with folded details: picture of the case, measured values, plays. */
std::string moreRow(const NightSummary& night, const CaseSummary& it, const Drawing& drawing)
{
    return fmt::format(
        "<tr class=\"more\"><td colspan=\"6\"><details>"
        "<summary>{}</summary>\n{}{}{}"
        "</details></td></tr>\n",
        summaryOf(it), figureOf(drawing, it.mStaged.mName), assessmentsTable(it),
        playsTable(night, it));
}

/** List entries for everything that was not observed. */
class NotObserved
{
public:
    explicit NotObserved(const NightSummary& night) : mNight(night) {}

    void addNeverObserved();
    void addUnmeasured();
    void addPlays(Outcome outcome, const char* what);
    void addCuts();
    void addSamplesNotKept();
    void addMissingPictures(const Pictures& pictures);

    std::string mText;

private:
    void add(const std::string& text) { mText += "<li>" + text + "</li>\n"; }

    const NightSummary& mNight;
};

void NotObserved::addNeverObserved()
{
    if (!mNight.mNight.mIsObserved) {
        add("The stream. Only the commands and the answers in the log of the program are known.");
    }
    addUnmeasured();
}

/** The measurements of the receiver are known only for cases that were assessed. */
void NotObserved::addUnmeasured()
{
    std::vector<std::string> names;
    for (const CaseSummary& it : mNight.mCases) {
        if (!it.mAssessment.isThere() && names.size() <= kMaxNamedPlays) {
            names.push_back(htmlText(it.mStaged.mName));
        }
    }
    if (mNight.assessedCases() == 0) {
        add("What a device measured. This report only covers the samples at the driver.");
    } else if (!names.empty()) {
        const bool isLong = names.size() > kMaxNamedPlays;
        add(
            fmt::format("What a device measured in the cases without expected values: "
                        "{}{}",
                        fmt::join(names, ", "), isLong ? " and more" : ""));
    }
    if (!mNight.mAssessmentProblem.empty()) {
        add(htmlText(mNight.mAssessmentProblem));
    }
}

void NotObserved::addPlays(Outcome outcome, const char* what)
{
    std::string names;
    size_t count = 0;
    for (const PlaySummary& play : mNight.mPlays) {
        if (play.mOutcome == outcome && ++count <= kMaxNamedPlays) {
            names += (names.empty() ? "" : ", ") + playText(mNight, play);
        }
    }
    if (count > 0) {
        add(fmt::format(
            "{} {}: {}{}", countText(count, "play"), what, htmlText(names),
            count > kMaxNamedPlays ? fmt::format(" and {} more", count - kMaxNamedPlays) : ""));
    }
}

void NotObserved::addCuts()
{
    for (size_t i = 1; i < mNight.mSessions.size(); ++i) {
        const qint64 fromNs = mNight.mSessions[i - 1].mEndNs;
        const qint64 toNs = mNight.mSessions[i].mBeginNs;
        add(fmt::format("From {} to {} UTC ({}): the night had stopped; it was resumed later.",
                        shortUtcText(fromNs), shortUtcText(toNs), durationText(toNs - fromNs)));
    }
}

/** Counts the findings whose samples were not kept, because the limit was reached. */
void NotObserved::addSamplesNotKept()
{
    size_t count = 0;
    for (const PlaySummary& play : mNight.mPlays) {
        count += static_cast<size_t>(std::count_if(
            play.mListedFindings.begin(), play.mListedFindings.end(),
            [](const auto& found) { return found.mStampNs && found.mSamplesFile.empty(); }));
    }
    if (count > 0) {
        add("The samples around " + countText(count, "finding") + ", which were not kept.");
    }
}

/** Names the missing pictures, one entry per reason. */
void NotObserved::addMissingPictures(const Pictures& pictures)
{
    std::map<std::string, std::string> names;
    const auto note = [&](const Drawing& drawing, const std::string& name) {
        if (!drawing.mReasonNotDrawn.empty()) {
            std::string& all = names[drawing.mReasonNotDrawn];
            all += (all.empty() ? "" : ", ") + name;
        }
    };
    for (size_t i = 0; i < pictures.mCases.size(); ++i) {
        note(pictures.mCases[i], mNight.mCases[i].mStaged.mName);
    }
    for (const auto& [file, drawing] : pictures.mFindings) {
        note(drawing, file);
    }
    for (const auto& [reason, all] : names) {
        add(fmt::format("Missing pictures: {}. Reason: {}", htmlText(all), htmlText(reason)));
    }
}
} // namespace

std::string casesPart(const NightSummary& night, const Pictures& pictures)
{
    if (night.mCases.empty()) {
        return "";
    }
    std::string text = std::string("<h2>Cases</h2>\n") + kCasesHead;
    for (size_t i = 0; i < night.mCases.size(); ++i) {
        text +=
            caseRow(night, night.mCases[i]) + moreRow(night, night.mCases[i], pictures.mCases[i]);
    }
    return text + "</tbody></table>\n";
}

std::string notObservedPart(const NightSummary& night, const Pictures& pictures)
{
    NotObserved part(night);
    part.addNeverObserved();
    part.addPlays(Outcome::NotPlayed, "not played");
    part.addPlays(Outcome::Unfinished, "not finished");
    part.addCuts();
    part.addSamplesNotKept();
    part.addMissingPictures(pictures);
    return part.mText.empty() ? ""
                              : "<h2>What was not observed</h2>\n<ul>\n" + part.mText + "</ul>\n";
}

} // namespace report
