#include "report/CaseTable.h"

#include <fmt/format.h>

#include "report/ReportText.h"

namespace report {

namespace {
constexpr char kHeading[] =
    "case,repetition,number,verdict,first_utc,last_utc,samples,delay_s,findings,what\n";

/** Puts the text in quotes if RFC 4180 requires them. */
std::string field(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string result = "\"";
    for (const char c : text) {
        result += c == '"' ? "\"\"" : std::string(1, c);
    }
    return result + "\"";
}

std::string findingTexts(const PlaySummary& play)
{
    std::string what;
    for (const journal::Finding& finding : play.mListedFindings) {
        what += (what.empty() ? "" : "; ") + finding.mText;
    }
    return what;
}
} // namespace

std::string caseTable(const NightSummary& night)
{
    std::string table = kHeading;
    for (const PlaySummary& play : night.mPlays) {
        const journal::StagedCase& staged = night.mCases[play.mCase].mStaged;
        const bool hasStamps = play.mFirstStampNs != 0;
        table += fmt::format("{},{},{},{},{},{},{},{},{},{}\n", field(staged.mName),
                             play.mRepetition, staged.mNumber, nameOf(play.mOutcome),
                             hasStamps ? utcText(play.mFirstStampNs) : "",
                             hasStamps ? utcText(play.mLastStampNs) : "", play.mSamples,
                             play.mDelayNs ? secondsText(*play.mDelayNs) : "", play.mFindings,
                             field(findingTexts(play)));
    }
    return table;
}

} // namespace report
