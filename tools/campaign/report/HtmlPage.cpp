#include "report/HtmlPage.h"

#include <fmt/format.h>

#include <QByteArray>

#include "report/HtmlParts.h"
#include "report/HtmlText.h"
#include "report/NightBar.h"
#include "report/PageStyle.h"
#include "report/ReportText.h"

namespace report {

namespace {
/** The outcome that gives the verdict of the night its colour. */
Outcome headOutcome(const NightSummary& night)
{
    if (night.isGood()) {
        return night.wanted();
    }
    const bool isBad = night.mFindings > 0 || night.mCounts.of(Outcome::Failed) > 0 ||
                       night.mState == NightState::Done || night.mState == NightState::GaveUp;
    return isBad ? Outcome::Failed : Outcome::Unfinished;
}

std::string timesText(const NightSummary& night)
{
    if (night.mSessions.empty()) {
        return "";
    }
    const qint64 beginNs = night.mSessions.front().mBeginNs;
    const qint64 endNs = night.mSessions.back().mEndNs;
    return fmt::format("{} to {} UTC, {}", shortUtcText(beginNs), shortUtcText(endNs),
                       durationText(endNs - beginNs));
}

/** Explains the verdict if the night did not run to its end. */
std::string stateText(const NightSummary& night)
{
    switch (night.mState) {
        case NightState::CutOff:
            return "The journal has no end: the night was cut off. This page shows what was on the "
                   "disk. <code>vx-campaign run</code> with "
                   "<code class=\"option\">--resume</code> continues with the first play that has "
                   "not ended.";
        case NightState::Running:
            return "The night was still running when this page was written.";
        case NightState::Interrupted:
            return "The night was ended by a signal. <code>vx-campaign run</code> with "
                   "<code class=\"option\">--resume</code> continues with the first play that has "
                   "not ended.";
        case NightState::FirstFailure:
            return "The plan was repeated until a play failed.";
        case NightState::GaveUp:
            return "The night gave up: " + htmlText(night.mReason) + ".";
        case NightState::Done:
            break;
    }
    return night.mNight.mIsObserved ? ""
                                    : "On a device the stream cannot be observed. Every play was "
                                      "commanded and answered, but nobody has seen the samples.";
}

std::string headOf(const NightSummary& night)
{
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           htmlText(verdictText(night)) + " - " + htmlText(night.mNight.mName) +
           "</title>\n<style>" + kPageStyle + "</style>\n</head>\n";
}

std::string verdictPart(const NightSummary& night)
{
    std::string text = fmt::format("<h1 class=\"{}\">{}</h1>\n", styleOf(headOutcome(night)),
                                   htmlText(verdictText(night)));
    if (!night.mSessions.empty()) {
        text += fmt::format("<p>Night <strong>{}</strong> of the plan <code>{}</code>, {}</p>\n",
                            htmlText(night.mNight.mName), htmlText(night.mNight.mPlanPath),
                            timesText(night));
    }
    const std::string state = stateText(night);
    return text + (state.empty() ? "" : "<p>" + state + "</p>\n");
}
} // namespace

std::string figureOf(const Drawing& drawing, const std::string& what)
{
    if (!drawing.mReasonNotDrawn.empty()) {
        return fmt::format("<p class=\"muted\">No picture of {}: {}.</p>\n", htmlText(what),
                           htmlText(drawing.mReasonNotDrawn));
    }
    // Embedded as a separate image, so that identifiers of two pictures cannot clash.
    const QByteArray svg =
        QByteArray::fromRawData(drawing.mSvg.data(), static_cast<int>(drawing.mSvg.size()));
    return fmt::format(
        "<figure><img alt=\"Picture of {}\" src=\"data:image/svg+xml;base64,{}\"></figure>\n",
        htmlText(what), svg.toBase64().constData());
}

std::string htmlPage(const NightSummary& night, const Pictures& pictures)
{
    std::string page = headOf(night) + "<body>\n<main>\n" + verdictPart(night) + numbersPart(night);
    if (const std::string bar = nightBar(night); !bar.empty()) {
        page += "<h2>The night</h2>\n" + bar;
    }
    return page + findingsPart(night, pictures) + casesPart(night, pictures) +
           notObservedPart(night, pictures) + remarksPart(night) + environmentPart(night) +
           "</main>\n</body>\n</html>\n";
}

} // namespace report
