#include "assess/AssessmentText.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/JunitFile.h"
#include "base/TextTable.h"
#include "measure/UtcText.h"

namespace assess {

namespace {
using Json = nlohmann::ordered_json;

std::string stampText(qint64 ns)
{
    return std::string(measure::UtcText().of(ns));
}

std::string numberText(double value)
{
    return fmt::format("{:.6g}", value);
}

std::string withUnit(double value, const std::string& unit)
{
    return numberText(value) + (unit.empty() ? "" : " " + unit);
}

/** Sums over all series that decide about the verdict. */
struct Totals
{
    size_t mJudged = 0;
    size_t mBeyond = 0;
    size_t mNotJudged = 0; ///< values
    size_t mInGaps = 0;
    size_t mMissing = 0;
    size_t mAdditional = 0;
    size_t mDoubled = 0;
    size_t mLate = 0;
    size_t mEarly = 0;
    size_t mNotObserved = 0; ///< series
    size_t mSeriesNotJudged = 0;
    size_t mNoLimit = 0; ///< series
};

Totals totalsOf(const AssessmentResult& result)
{
    Totals totals;
    for (const SeriesResult& it : result.mSeries) {
        if (it.mVerdict == Verdict::NoLimit) {
            ++totals.mNoLimit;
            continue;
        }
        totals.mJudged += it.mJudged;
        totals.mBeyond += it.mBeyond;
        totals.mNotJudged += it.mCompared - it.mJudged;
        totals.mInGaps += it.mCounts.mInGaps;
        totals.mAdditional += it.mCounts.mAdditional;
        totals.mDoubled += it.mCounts.mDoubled;
        totals.mLate += it.mCounts.mLate;
        totals.mEarly += it.mCounts.mEarly;
        totals.mSeriesNotJudged += it.mVerdict == Verdict::NotJudged ? 1 : 0;
        if (it.mVerdict == Verdict::NotObserved) {
            ++totals.mNotObserved;
        } else {
            totals.mMissing += it.mCounts.mMissing;
        }
    }
    return totals;
}

void addCount(std::vector<std::string>& parts, size_t count, const char* what)
{
    if (count > 0) {
        parts.push_back(fmt::format("{} {}", count, what));
    }
}

/** Counts of what is wrong. */
std::vector<std::string> faultsOf(const Totals& totals)
{
    std::vector<std::string> parts;
    if (totals.mBeyond > 0) {
        parts.push_back(
            fmt::format("{} of {} values beyond their limits", totals.mBeyond, totals.mJudged));
    }
    addCount(parts, totals.mMissing, "missing");
    addCount(parts, totals.mAdditional, "additional");
    addCount(parts, totals.mDoubled, "doubled");
    addCount(parts, totals.mLate, "late");
    addCount(parts, totals.mEarly, "early");
    addCount(parts, totals.mNotObserved, "series not observed");
    return parts;
}

/** Counts of what is neither wrong nor known to be good. */
std::string unknownOf(const Totals& totals)
{
    std::vector<std::string> parts;
    addCount(parts, totals.mNotJudged, "values outside the conditions of the limits");
    addCount(parts, totals.mInGaps, "values in gaps of the expected ones");
    addCount(parts, totals.mNoLimit, "series without a limit");
    return parts.empty() ? "" : fmt::format("; not judged: {}", fmt::join(parts, ", "));
}

std::string deviationsText(const MatchCounts& counts)
{
    std::vector<std::string> parts;
    addCount(parts, counts.mMissing, "missing");
    addCount(parts, counts.mAdditional, "additional");
    addCount(parts, counts.mDoubled, "doubled");
    addCount(parts, counts.mLate, "late");
    addCount(parts, counts.mEarly, "early");
    return fmt::format("{}", fmt::join(parts, ", "));
}

std::string limitText(const SeriesResult& series)
{
    if (series.mLimit.empty() || !series.mLargest) {
        return "";
    }
    return withUnit(series.mLargest->mLimit, series.mUnit) +
           (series.mClause.empty() ? "" : " (" + series.mClause + ")");
}

std::string seriesTable(const AssessmentResult& result)
{
    base::TextTable table({"quantity", "channel", ">compared", ">judged", ">beyond",
                           ">largest error", "at", "limit", "verdict", "values"});
    for (const SeriesResult& it : result.mSeries) {
        table.add({it.mKey.mQuantity, it.mKey.mChannel, std::to_string(it.mCompared),
                   std::to_string(it.mJudged), std::to_string(it.mBeyond),
                   it.mLargest ? withUnit(it.mLargest->mError, it.mUnit) : "",
                   it.mLargest ? stampText(it.mLargest->mUtcNs) : "", limitText(it),
                   nameOf(it.mVerdict), deviationsText(it.mCounts)});
    }
    return table.text();
}

std::string worstTable(const AssessmentResult& result)
{
    base::TextTable table({"quantity", "channel", "at", ">expected", ">measured", ">error",
                           ">limit", ">of the limit"});
    for (const WorstValue& it : result.mWorst) {
        table.add({it.mKey.mQuantity, it.mKey.mChannel, stampText(it.mValue.mUtcNs),
                   fmt::format("{:.9g}", it.mValue.mExpected),
                   fmt::format("{:.9g}", it.mValue.mMeasured), numberText(it.mValue.mError),
                   numberText(it.mValue.mLimit),
                   fmt::format("{:.0f} %", 100.0 * it.mValue.errorRatio())});
    }
    return table.text();
}

std::string listText(const std::string& title, const std::vector<std::string>& lines)
{
    std::string text = lines.empty() ? "" : "\n" + title + "\n";
    for (const std::string& line : lines) {
        text += "  " + line + "\n";
    }
    return text;
}

Json jsonOf(const JudgedValue& value)
{
    return {{"utc", stampText(value.mUtcNs)},
            {"expected", value.mExpected},
            {"measured", value.mMeasured},
            {"error", value.mError},
            {"limit", value.mLimit > 0.0 ? Json(value.mLimit) : Json(nullptr)}};
}

Json jsonOf(const SeriesResult& series)
{
    Json json = {{"quantity", series.mKey.mQuantity},
                 {"channel", series.mKey.mChannel},
                 {"unit", series.mUnit},
                 {"verdict", nameOf(series.mVerdict)},
                 {"expected", series.mCounts.mExpected},
                 {"compared", series.mCompared},
                 {"judged", series.mJudged},
                 {"beyond", series.mBeyond},
                 {"missing", series.mCounts.mMissing},
                 {"additional", series.mCounts.mAdditional},
                 {"inGaps", series.mCounts.mInGaps},
                 {"doubled", series.mCounts.mDoubled},
                 {"late", series.mCounts.mLate},
                 {"early", series.mCounts.mEarly},
                 {"outOfOrder", series.mCounts.mOutOfOrder},
                 {"rule", series.mLimit},
                 {"clause", series.mClause}};
    json["largest"] = series.mLargest ? jsonOf(*series.mLargest) : Json(nullptr);
    return json;
}

/** The message in a test report about a series that is not within its limits. */
std::string messageOf(const SeriesResult& series)
{
    std::string text = nameOf(series.mVerdict);
    if (series.mBeyond > 0) {
        text +=
            fmt::format(": {} of {} values, the largest error {} at {}, limit {}", series.mBeyond,
                        series.mJudged, withUnit(series.mLargest->mError, series.mUnit),
                        stampText(series.mLargest->mUtcNs), limitText(series));
    }
    const std::string deviations = deviationsText(series.mCounts);
    return deviations.empty() ? text : text + "; " + deviations;
}
} // namespace

std::string verdictText(const AssessmentResult& result)
{
    const Totals totals = totalsOf(result);
    const std::string unknown = unknownOf(totals);
    switch (result.mVerdict) {
        case Verdict::Within:
            return fmt::format("good: {} values within their limits{}", totals.mJudged, unknown);
        case Verdict::Beyond:
        case Verdict::Incomplete:
            return fmt::format("BAD: {}{}", fmt::join(faultsOf(totals), ", "), unknown);
        case Verdict::NotObserved:
            return fmt::format("NOT OBSERVED: {} values within their limits, {}{}", totals.mJudged,
                               fmt::join(faultsOf(totals), ", "), unknown);
        case Verdict::NotJudged:
        case Verdict::NoLimit:
            break;
    }
    return "NOT OBSERVED: no value could be compared with a limit" + unknown;
}

std::string textOf(const AssessmentResult& result, const LimitTable& limits)
{
    std::string text = "verdict: " + verdictText(result) + "\n";
    text += fmt::format("limits: {}{}\n\n", limits.mName,
                        limits.mTitle.empty() ? "" : ": " + limits.mTitle);
    text += seriesTable(result);
    text += result.mWorst.empty() ? "" : "\nworst values\n" + worstTable(result);
    text += listText("found", result.mFindings);
    text += listText("possible causes (nothing was corrected)", result.mDiagnoses);
    text += listText("measured and not expected", result.mUnexpected);
    return text;
}

std::string jsonOf(const AssessmentResult& result, const LimitTable& limits)
{
    Json json = {{"good", result.isGood()},          {"verdict", verdictText(result)},
                 {"limits", limits.mName},           {"title", limits.mTitle},
                 {"series", Json::array()},          {"worst", Json::array()},
                 {"findings", result.mFindings},     {"diagnoses", result.mDiagnoses},
                 {"notExpected", result.mUnexpected}};
    for (const SeriesResult& it : result.mSeries) {
        json["series"].push_back(jsonOf(it));
    }
    for (const WorstValue& it : result.mWorst) {
        Json value = {{"quantity", it.mKey.mQuantity}, {"channel", it.mKey.mChannel}};
        value.update(jsonOf(it.mValue));
        json["worst"].push_back(value);
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string junitOf(const AssessmentResult& result, const LimitTable& limits)
{
    base::JunitFile file;
    const std::string begin = stampText(result.mBeginUtcNs.value_or(0));
    base::JunitSuite suite =
        file.addSuite("vx-case judge", limits.mName, begin.substr(0, begin.find('.')));
    for (const SeriesResult& it : result.mSeries) {
        suite.addTest(nameOf(it.mKey), limits.mName + "." + it.mKey.mQuantity);
        const std::string message = messageOf(it);
        switch (it.mVerdict) {
            case Verdict::Within:
                break;
            case Verdict::NoLimit:
            case Verdict::NotJudged:
                suite.skip(message);
                break;
            default:
                suite.fail(nameOf(it.mVerdict), message, "");
        }
    }
    suite.addTest("assessment", limits.mName);
    if (!result.isGood()) {
        std::string text;
        for (const auto* const lines : {&result.mFindings, &result.mDiagnoses}) {
            text += fmt::format("{}\n", fmt::join(*lines, "\n"));
        }
        suite.fail("assessment", verdictText(result), text);
    }
    return file.text();
}

} // namespace assess
