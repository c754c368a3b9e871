#include "assess/Assessment.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "assess/Diagnosis.h"
#include "assess/EventDiagnosis.h"
#include "assess/Events.h"
#include "assess/LostValues.h"
#include "assess/NominalCheck.h"
#include "assess/Phasors.h"
#include "assess/QuantityNames.h"
#include "assess/SeriesJudge.h"
#include "assess/Situations.h"
#include "assess/StepResponses.h"
#include "base/Numbers.h"

namespace assess {

namespace {
constexpr size_t kMaxWorst = 10;

qint64 nsOf(double seconds)
{
    return std::llround(seconds * base::kNanosecondsPerSecond);
}

double firstKnown(double a, double b)
{
    return a > 0.0 ? a : b;
}

bool isStart(const SeriesKey& key)
{
    const auto kind = eventKindOf(key.mQuantity);
    return kind && key.mQuantity == startOf(*kind);
}

/** Late and early values are compared, but count as odd all the same. */
size_t oddValues(const MatchCounts& counts)
{
    return counts.mMissing + counts.mAdditional + counts.mLate + counts.mEarly + counts.mDoubled;
}

/** A missing event is never good, even without a limit for its start. */
Verdict verdictOf(const SeriesResult& series, bool hasLimit)
{
    if (!hasLimit) {
        return isStart(series.mKey) && oddValues(series.mCounts) > 0 ? Verdict::Incomplete
                                                                     : Verdict::NoLimit;
    }
    if (series.mBeyond > 0) {
        return Verdict::Beyond;
    }
    if (series.mCompared == 0 && series.mCounts.mExpected > 0 && !isStart(series.mKey)) {
        return Verdict::NotObserved;
    }
    if (oddValues(series.mCounts) > 0) {
        return Verdict::Incomplete;
    }
    return series.mJudged == 0 ? Verdict::NotJudged : Verdict::Within;
}

/** The overall verdict: of all verdicts of series the first in the order of the enumeration. */
Verdict worstOf(const std::vector<SeriesResult>& series)
{
    Verdict worst = Verdict::NoLimit;
    for (const SeriesResult& it : series) {
        worst = std::min(worst, it.mVerdict);
    }
    // If some values are within their limits, values that cannot be judged do not decide.
    const bool hasWithin = std::any_of(series.begin(), series.end(), [](const auto& it) {
        return it.mVerdict == Verdict::Within;
    });
    return worst == Verdict::NotJudged && hasWithin ? Verdict::Within : worst;
}

/** Keeps the worst values of all series. */
class WorstList
{
public:
    void add(const SeriesKey& key, const JudgedValue& value);
    std::vector<WorstValue> take();

private:
    static bool isWorse(const WorstValue& a, const WorstValue& b)
    {
        return a.mValue.errorRatio() > b.mValue.errorRatio();
    }

    std::vector<WorstValue> mHeap; ///< the least bad value is at the front
};

void WorstList::add(const SeriesKey& key, const JudgedValue& value)
{
    if (value.errorRatio() == 0.0) {
        return;
    }
    const bool isFull = mHeap.size() == kMaxWorst;
    if (isFull && value.errorRatio() <= mHeap.front().mValue.errorRatio()) {
        return;
    }
    if (isFull) {
        std::pop_heap(mHeap.begin(), mHeap.end(), isWorse);
        mHeap.pop_back();
    }
    mHeap.push_back({key, value});
    std::push_heap(mHeap.begin(), mHeap.end(), isWorse);
}

std::vector<WorstValue> WorstList::take()
{
    std::stable_sort(mHeap.begin(), mHeap.end(), isWorse);
    return std::move(mHeap);
}
} // namespace

const char* nameOf(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Beyond:
            return "BEYOND";
        case Verdict::Incomplete:
            return "INCOMPLETE";
        case Verdict::NotObserved:
            return "NOT OBSERVED";
        case Verdict::NotJudged:
            return "not judged";
        case Verdict::Within:
            return "within";
        case Verdict::NoLimit:
            break;
    }
    return "no limit";
}

double JudgedValue::errorRatio() const
{
    return mLimit > 0.0 ? std::abs(mError) / mLimit : std::abs(mError);
}

bool isBeyond(const JudgedValue& value)
{
    constexpr double kRounding = 1e-9;
    const double size = std::abs(value.mExpected) + std::abs(value.mMeasured) + value.mLimit;
    return value.mLimit > 0.0 && std::abs(value.mError) > value.mLimit + kRounding * size;
}

/** Performs the comparison. */
class Assessment::Work
{
public:
    Work(const ValueTable& expected, const ValueTable& measured, const LimitTable& limits,
         AssessmentOptions options);

    const AssessmentResult& result() const { return mResult; }
    std::vector<JudgedValue> valuesOf(const SeriesKey& key) const;

private:
    bool isWanted(const SeriesKey& key) const;
    Matching matchingOf(const SeriesKey& key) const;
    void assessSeries(const SeriesKey& key);
    void judgeValues(const Matching& matching, const SeriesJudge& judge, SeriesResult& series);
    void findUnexpected();

    const ValueTable& mExpected;
    const ValueTable& mMeasured;
    const LimitTable& mLimits;
    const AssessmentOptions mOptions;
    const Nominal mNominal;
    const qint64 mToleranceNs;
    const std::optional<TimeRange> mReference;
    const Situations mSituations;
    ComputedSeries mComputed;
    WorstList mWorst;
    AssessmentResult mResult;
};

Assessment::Work::Work(const ValueTable& expected, const ValueTable& measured,
                       const LimitTable& limits, AssessmentOptions options)
    : mExpected(expected),
      mMeasured(measured),
      mLimits(limits),
      mOptions(std::move(options)),
      mNominal{firstKnown(mOptions.mNominal.mVolts, limits.mNominal.mVolts),
               firstKnown(mOptions.mNominal.mAmperes, limits.mNominal.mAmperes),
               firstKnown(mOptions.mNominal.mHertz, limits.mNominal.mHertz)},
      mToleranceNs(nsOf(limits.mToleranceSeconds)),
      mReference(expected.range()),
      mSituations(expected)
{
    addVectorErrors(expected, measured, mToleranceNs, mOptions.mIsPart, mComputed);
    addEvents(expected, measured, nsOf(limits.mEventToleranceSeconds), mOptions.mIsPart, mComputed);
    addStepResponses(expected, measured, limits, mComputed);
    for (const auto& [key, series] : expected.all()) {
        if (!eventKindOf(key.mQuantity)) {
            assessSeries(key);
        }
    }
    for (const auto& [key, matching] : mComputed) {
        assessSeries(key);
    }
    std::sort(mResult.mSeries.begin(), mResult.mSeries.end(),
              [](const auto& a, const auto& b) { return a.mKey < b.mKey; });
    mResult.mVerdict = worstOf(mResult.mSeries);
    if (mReference) {
        mResult.mBeginUtcNs = mReference->mBeginNs;
    }
    mResult.mWorst = mWorst.take();
    findUnexpected();
    mResult.mFindings = lostValues(mResult.mSeries);
    const std::string problem = nominalProblem(expected, mNominal.mVolts);
    if (!problem.empty()) {
        mResult.mFindings.push_back(problem);
    }
    mResult.mDiagnoses = diagnose(expected, measured, mResult.mSeries, mToleranceNs);
    for (const std::string& text : diagnoseEvents(mComputed, mNominal.mHertz)) {
        mResult.mDiagnoses.push_back(text);
    }
}

bool Assessment::Work::isWanted(const SeriesKey& key) const
{
    return mOptions.mQuantities.empty() || isOneOf(key.mQuantity, mOptions.mQuantities);
}

Matching Assessment::Work::matchingOf(const SeriesKey& key) const
{
    const auto computed = mComputed.find(key);
    if (computed != mComputed.end()) {
        return computed->second;
    }
    const Series* const expected = mExpected.find(key);
    const Series* const measured = mMeasured.find(key);
    if (expected == nullptr) {
        return {};
    }
    if (measured == nullptr) {
        return matchInTime(*expected, {}, mToleranceNs);
    }
    return matchInTime(*expected,
                       mOptions.mIsPart ? partOf(*measured, *expected, mToleranceNs) : *measured,
                       mToleranceNs, mReference);
}

void Assessment::Work::assessSeries(const SeriesKey& key)
{
    if (!isWanted(key)) {
        return;
    }
    Matching matching = matchingOf(key);
    SeriesResult series;
    series.mKey = key;
    series.mUnit = unitOf(key);
    series.mCounts = matching.mCounts;
    series.mCompared = matching.mPairs.size();
    series.mStampDistanceNs = matching.mDistanceNs;
    const SeriesJudge judge(key, mLimits, mNominal, mSituations, matching.mSpacingNs);
    judgeValues(matching, judge, series);
    series.mMissing = std::move(matching.mMissing);
    series.mAdditional = std::move(matching.mAdditional);
    series.mDoubled = std::move(matching.mDoubled);
    series.mVerdict = verdictOf(series, judge.hasLimit());
    mResult.mSeries.push_back(std::move(series));
}

/** A value with a limit takes precedence over a larger error without one. */
void Assessment::Work::judgeValues(const Matching& matching, const SeriesJudge& judge,
                                   SeriesResult& series)
{
    const Limit* largestLimit = nullptr;
    for (const Pair& pair : matching.mPairs) {
        const Limit* limit = nullptr;
        const JudgedValue value = judge.judge(pair, &limit);
        if (limit != nullptr) {
            ++series.mJudged;
            series.mBeyond += isBeyond(value) ? 1 : 0;
            mWorst.add(series.mKey, value);
        }
        const bool isFirst = !series.mLargest || (limit != nullptr && largestLimit == nullptr);
        const bool isSameKind = (limit != nullptr) == (largestLimit != nullptr);
        if (isFirst || (isSameKind && value.errorRatio() > series.mLargest->errorRatio())) {
            series.mLargest = value;
            largestLimit = limit;
        }
    }
    if (largestLimit != nullptr) {
        series.mLimit = amountText(*largestLimit);
        series.mClause = largestLimit->mClause;
    }
}

void Assessment::Work::findUnexpected()
{
    const bool hasEvents = areEventsExpected(mExpected);
    for (const auto& [key, series] : mMeasured.all()) {
        const bool isEvent = eventKindOf(key.mQuantity) || key.mQuantity == kEventCount;
        const bool isKnown = isEvent ? hasEvents : mExpected.find(key) != nullptr;
        if (!isKnown && isWanted(key) && !series.mSamples.empty()) {
            mResult.mUnexpected.push_back(nameOf(key));
        }
    }
}

std::vector<JudgedValue> Assessment::Work::valuesOf(const SeriesKey& key) const
{
    const Matching matching = matchingOf(key);
    const SeriesJudge judge(key, mLimits, mNominal, mSituations, matching.mSpacingNs);
    std::vector<JudgedValue> values;
    values.reserve(matching.mPairs.size());
    for (const Pair& pair : matching.mPairs) {
        values.push_back(judge.judge(pair, nullptr));
    }
    return values;
}

Assessment::Assessment(const ValueTable& expected, const ValueTable& measured,
                       const LimitTable& limits, AssessmentOptions options)
    : mWork(std::make_unique<Work>(expected, measured, limits, std::move(options)))
{
}

Assessment::~Assessment() = default;

const AssessmentResult& Assessment::result() const
{
    return mWork->result();
}

std::vector<JudgedValue> Assessment::valuesOf(const SeriesKey& key) const
{
    return mWork->valuesOf(key);
}

} // namespace assess
