#include "expected/CaseJudge.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "report/ReportText.h"

namespace expected {

namespace {
using report::Grade;

Grade gradeOf(assess::Verdict verdict)
{
    switch (verdict) {
        case assess::Verdict::Within:
            return Grade::Good;
        case assess::Verdict::NotJudged:
        case assess::Verdict::NoLimit:
            return Grade::NotJudged;
        default:
            return Grade::Bad;
    }
}

/** The result of a quantity and channel in its worst play. */
std::string textOf(const assess::SeriesResult& series)
{
    std::string text =
        fmt::format("{} of {} values compared", series.mCompared, series.mCounts.mExpected);
    if (series.mLargest) {
        text += fmt::format(", largest error {:.4g} {} at {}", series.mLargest->mError,
                            series.mUnit, report::utcText(series.mLargest->mUtcNs));
    }
    if (!series.mLimit.empty()) {
        text += ", limit " + series.mLimit;
    }
    const std::array<std::pair<size_t, const char*>, 5> odd{
        {{series.mCounts.mMissing, "missing"},
         {series.mCounts.mAdditional, "additional"},
         {series.mCounts.mDoubled, "doubled"},
         {series.mCounts.mLate, "late"},
         {series.mCounts.mEarly, "early"}}};
    for (const auto& [count, what] : odd) {
        text += count > 0 ? fmt::format(", {} {}", count, what) : "";
    }
    return text;
}

bool isWorse(const assess::SeriesResult& a, const assess::SeriesResult& b)
{
    if (a.mVerdict != b.mVerdict) {
        return a.mVerdict < b.mVerdict;
    }
    return a.mLargest && (!b.mLargest || a.mLargest->errorRatio() > b.mLargest->errorRatio());
}
} // namespace

void CaseJudge::add(const std::string& play, const assess::AssessmentResult& result)
{
    ++mPlays;
    bool hasBad = false;
    for (const assess::SeriesResult& series : result.mSeries) {
        addSeries(play, series);
        hasBad = hasBad || gradeOf(series.mVerdict) == Grade::Bad;
    }
    for (const auto* const texts : {&result.mFindings, &result.mDiagnoses}) {
        for (const std::string& text : *texts) {
            mAssessment.mRemarks.push_back(play + ": " + text);
        }
    }
    if (result.isGood()) {
        return;
    }
    const std::string text = assess::verdictText(result);
    if (hasBad) {
        ++mBadPlays;
        mFirstBad = mFirstBad.empty() ? play + ": " + text : mFirstBad;
    } else {
        addBad(play, "NOT OBSERVED", text);
    }
}

void CaseJudge::addNotObserved(const std::string& play, const std::string& reason)
{
    ++mPlays;
    addBad(play, "NOT OBSERVED", reason);
}

void CaseJudge::addSeries(const std::string& play, const assess::SeriesResult& series)
{
    const auto [known, isNew] = mWorst.try_emplace(series.mKey, Worst{series, play});
    if (!isNew && isWorse(series, known->second.mSeries)) {
        known->second = {series, play};
    }
}

void CaseJudge::addBad(const std::string& play, const std::string& verdict, const std::string& text)
{
    ++mBadPlays;
    mFirstBad = mFirstBad.empty() ? play + ": " + text : mFirstBad;
    mAssessment.mValues.push_back({play, verdict, text, Grade::Bad});
}

report::CaseAssessment CaseJudge::finish()
{
    for (const auto& [key, worst] : mWorst) {
        mAssessment.mValues.push_back(
            {nameOf(key), assess::nameOf(worst.mSeries.mVerdict),
             textOf(worst.mSeries) + (mPlays > 1 ? ", in " + worst.mPlay : ""),
             gradeOf(worst.mSeries.mVerdict)});
    }
    mAssessment.mVerdict =
        mBadPlays == 0
            ? fmt::format("good: {} within the limits", report::countText(mPlays, "play"))
            : fmt::format("not good: {} of {}; {}", mBadPlays, report::countText(mPlays, "play"),
                          mFirstBad);
    return std::move(mAssessment);
}

} // namespace expected
