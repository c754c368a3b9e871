#include "report/HtmlParts.h"

#include <fmt/format.h>

#include <set>

#include "report/HtmlText.h"
#include "report/ReportText.h"

namespace report {

namespace {
/** Max number of plays whose findings are listed; the table of plays has all of them. */
constexpr size_t kMaxPlaysWithFindings = 50;

void addNumber(const char* name, const std::string& value, const std::string& more,
               std::string* text)
{
    *text += fmt::format("<div><dt>{}</dt><dd>{}{}</dd></div>\n", name, value,
                         more.empty() ? "" : "<small>" + more + "</small>");
}

/** Counts above zero of all outcomes except the wanted one. */
std::string othersText(const NightSummary& night)
{
    std::string text;
    for (size_t i = 0; i < static_cast<size_t>(Outcome::Count); ++i) {
        const auto outcome = static_cast<Outcome>(i);
        if (outcome != night.wanted() && night.mCounts.of(outcome) > 0) {
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", night.mCounts.of(outcome),
                                nameOf(outcome));
        }
    }
    return text;
}

std::string findingText(const journal::Finding& finding)
{
    return fmt::format(
        "<li><strong>{}</strong>: {}{}</li>\n", htmlText(finding.mKind), htmlText(finding.mText),
        finding.mStampNs ? " <small>at " + utcText(*finding.mStampNs) + "</small>" : "");
}

/** A list of the findings, and a picture of each file of kept samples. */
std::string findingList(const std::vector<journal::Finding>& findings, const Pictures& pictures,
                        const std::string& what)
{
    std::string list;
    std::string figures;
    std::set<std::string> shown;
    for (const journal::Finding& it : findings) {
        list += findingText(it);
        const auto drawing = pictures.mFindings.find(it.mSamplesFile);
        if (drawing != pictures.mFindings.end() && shown.insert(it.mSamplesFile).second) {
            figures += figureOf(drawing->second, "the samples around a finding of " + what);
        }
    }
    return "<ul>\n" + list + "</ul>\n" + figures;
}

std::string playFindings(const NightSummary& night, size_t index, const Pictures& pictures)
{
    const PlaySummary& play = night.mPlays[index];
    const std::string name = playText(night, play);
    std::string text =
        fmt::format("<h3>{}</h3>\n<p class=\"muted\">play {} of the night, from {} UTC</p>\n",
                    htmlText(name), index + 1, shortUtcText(play.mBeginNs));
    if (play.mAttempts > 1) {
        text += "<p>An attempt was cut off; its findings count as well.</p>\n";
    }
    if (play.mFindings > play.mListedFindings.size()) {
        text += fmt::format("<p>{}, of which these are shown:</p>\n",
                            countText(play.mFindings, "finding"));
    }
    return text + findingList(play.mListedFindings, pictures, name);
}

/** A line for each case whose measured values are not good. */
std::string measuredFindings(const NightSummary& night)
{
    std::string list;
    for (const CaseSummary& it : night.mCases) {
        if (it.mAssessment.bad() > 0) {
            list += fmt::format("<li><strong>{}</strong>: {}</li>\n", htmlText(it.mStaged.mName),
                                htmlText(it.mAssessment.mVerdict));
        }
    }
    return list.empty() ? "" : "<h3>Measured values</h3>\n<ul>\n" + list + "</ul>\n";
}
} // namespace

std::string delayText(const std::optional<DelaySpread>& delays)
{
    if (!delays) {
        return "-";
    }
    if (delays->mMinNs == delays->mMaxNs) {
        return durationText(delays->mMinNs);
    }
    return fmt::format("{} <small>{} to {}</small>", durationText(delays->mMedianNs),
                       durationText(delays->mMinNs), durationText(delays->mMaxNs));
}

std::string numbersPart(const NightSummary& night)
{
    std::string text = "<dl class=\"numbers\">\n";
    addNumber(night.mNight.mIsObserved ? "Plays passed" : "Plays answered, not observed",
              fmt::format("{} of {}", night.mCounts.of(night.wanted()), night.mPlays.size()),
              othersText(night), &text);
    addNumber(
        "Findings", std::to_string(night.mFindings),
        night.mOutside.empty() ? "" : fmt::format("{} outside the plays", night.mOutside.size()),
        &text);
    if (night.mNight.mIsObserved) {
        addNumber("Samples of the cases", groupedText(night.mSamples), "", &text);
    }
    addNumber(night.mNight.mIsObserved ? "From command to first sample, median"
                                       : "From command to answer, median",
              delayText(night.mDelays), "", &text);
    if (night.mProgramRuns > 0) {
        addNumber("Runs of the program", std::to_string(night.mProgramRuns),
                  night.mDeaths.empty() ? "" : fmt::format("{} of them died", night.mDeaths.size()),
                  &text);
    }
    if (const size_t assessed = night.assessedCases(); assessed > 0) {
        addNumber("Cases with measured values", std::to_string(assessed),
                  fmt::format("{} not good; limits {}",
                              countText(night.badAssessments(), "measured result"),
                              htmlText(night.mLimits)),
                  &text);
    }
    if (night.mSessions.size() > 1) {
        addNumber("Times resumed", std::to_string(night.mSessions.size() - 1), "", &text);
    }
    return text + "</dl>\n";
}

std::string findingsPart(const NightSummary& night, const Pictures& pictures)
{
    std::string text;
    size_t listed = 0;
    size_t others = 0;
    for (size_t i = 0; i < night.mPlays.size(); ++i) {
        if (night.mPlays[i].mOutcome != Outcome::Failed) {
            continue;
        }
        if (listed++ < kMaxPlaysWithFindings) {
            text += playFindings(night, i, pictures);
        } else {
            ++others;
        }
    }
    if (others > 0) {
        text += fmt::format("<p>{} failed: see the cases, or cases.csv.</p>\n",
                            countText(others, "more play"));
    }
    if (!night.mOutside.empty()) {
        text += "<h3>Outside the plays</h3>\n" +
                findingList(night.mOutside, pictures, "the time outside the plays");
    }
    text += measuredFindings(night);
    for (const journal::ProgramEnded& death : night.mDeaths) {
        text += fmt::format("<p>Run {} of the program: {}.</p>\n", death.mRun,
                            htmlText(death.mEndText));
    }
    return text.empty() ? "" : "<h2>Findings</h2>\n" + text;
}

std::string remarksPart(const NightSummary& night)
{
    std::string text;
    for (const std::string& remark : night.mRemarks) {
        text += fmt::format("<li>{}</li>\n", htmlText(remark));
    }
    return text.empty() ? "" : "<h2>Remarks</h2>\n<ul>\n" + text + "</ul>\n";
}

std::string environmentPart(const NightSummary& night)
{
    std::string text;
    const std::map<std::string, std::string>* last = nullptr;
    for (const Session& session : night.mSessions) {
        if (last != nullptr && session.mEnvironment == *last) {
            continue;
        }
        text += last == nullptr
                    ? ""
                    : fmt::format("<h3>From {} UTC on</h3>\n", shortUtcText(session.mBeginNs));
        text += "<dl class=\"facts\">\n";
        for (const auto& [name, value] : session.mEnvironment) {
            text += fmt::format("<dt>{}</dt><dd>{}</dd>\n", htmlText(name), htmlText(value));
        }
        if (last == nullptr) {
            text += fmt::format(
                "<dt>gap before each play</dt><dd>at least {}</dd>\n"
                "<dt>SHA-256 of the plan</dt><dd>{}</dd>\n"
                "<dt>SHA-256 of what was played</dt><dd>{}</dd>\n",
                durationText(night.mNight.mGapNs), htmlText(night.mNight.mPlanHash),
                htmlText(night.mNight.mStageHash));
        }
        if (last == nullptr && night.mNight.mSeed) {
            text += fmt::format("<dt>order</dt><dd>shuffled, seed {}</dd>\n", *night.mNight.mSeed);
        }
        text += "</dl>\n";
        last = &session.mEnvironment;
    }
    return text.empty() ? "" : "<h2>Environment</h2>\n" + text;
}

} // namespace report
