#include "assess/Matching.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace assess {

namespace {
/** Adds a time to a list for messages, up to its max length. */
void list(std::vector<qint64>& times, qint64 utcNs)
{
    if (times.size() < Matching::kMaxListed) {
        times.push_back(utcNs);
    }
}

/** Matches two series in one pass. */
class Matcher
{
public:
    Matcher(const Series& expected, const Series& measured, qint64 toleranceNs,
            const std::optional<TimeRange>& reference)
        : mExpected(expected.mSamples),
          mMeasured(measured.mSamples),
          mToleranceNs(toleranceNs),
          mReference(reference)
    {
        mResult.mCounts.mExpected = mExpected.size();
        mResult.mCounts.mOutOfOrder = measured.mOutOfOrder;
        mResult.mSpacingNs = spacingOf(mExpected);
        mWindowNs = mResult.mSpacingNs > 0 ? mResult.mSpacingNs / 2 : toleranceNs;
    }

    Matching match();

private:
    qint64 distance(size_t measured) const
    {
        return mMeasured[measured].mUtcNs - mExpected[mNext].mUtcNs;
    }
    bool isInGap(size_t measured) const;
    void takeAdditional(size_t measured);
    void takeNext();

    const std::vector<Sample>& mExpected;
    const std::vector<Sample>& mMeasured;
    const qint64 mToleranceNs;
    const std::optional<TimeRange>& mReference;
    qint64 mWindowNs = 0;
    Matching mResult;
    double mDistances = 0.0; ///< their sum
    size_t mNext = 0;        ///< expected value that is looked for
    size_t mCandidate = 0;   ///< first measured value that is not taken yet
};

Matching Matcher::match()
{
    mResult.mPairs.reserve(std::min(mExpected.size(), mMeasured.size()));
    for (; mNext < mExpected.size(); ++mNext) {
        while (mCandidate < mMeasured.size() && distance(mCandidate) < -mWindowNs) {
            takeAdditional(mCandidate++);
        }
        takeNext();
    }
    for (; mCandidate < mMeasured.size(); ++mCandidate) {
        takeAdditional(mCandidate);
    }
    const auto pairs = static_cast<double>(mResult.mPairs.size());
    mResult.mDistanceNs = std::llround(pairs > 0.0 ? mDistances / pairs : 0.0);
    return std::move(mResult);
}

/** Takes all measured values that are nearer to this expected value than to the next one. */
void Matcher::takeNext()
{
    const qint64 end = mNext + 1 < mExpected.size()
                           ? (mExpected[mNext + 1].mUtcNs - mExpected[mNext].mUtcNs + 1) / 2
                           : mWindowNs + 1;
    size_t best = mMeasured.size();
    size_t count = 0;
    for (; mCandidate < mMeasured.size() && distance(mCandidate) < std::min(end, mWindowNs + 1);
         ++mCandidate, ++count) {
        if (count == 0 || std::abs(distance(mCandidate)) < std::abs(distance(best))) {
            best = mCandidate;
        }
    }
    const qint64 utcNs = mExpected[mNext].mUtcNs;
    if (count == 0) {
        ++mResult.mCounts.mMissing;
        list(mResult.mMissing, utcNs);
        return;
    }
    if (count > 1) {
        mResult.mCounts.mDoubled += count - 1;
        list(mResult.mDoubled, utcNs);
    }
    mResult.mCounts.mLate += distance(best) > mToleranceNs ? 1 : 0;
    mResult.mCounts.mEarly += distance(best) < -mToleranceNs ? 1 : 0;
    mDistances += static_cast<double>(distance(best));
    mResult.mPairs.push_back({utcNs, mExpected[mNext].mValue, mMeasured[best].mValue});
}

/**
 * Whether the expected values around it are far apart, as percentages around an interruption. A
 * single expected value has no interval, so that nothing is far from it.
 */
bool Matcher::isInGap(size_t measured) const
{
    const bool isFirst = mNext == 0;
    const bool isLast = mNext == mExpected.size();
    const qint64 utcNs = mMeasured[measured].mUtcNs;
    if (mResult.mSpacingNs == 0 || ((isFirst || isLast) && !mReference) ||
        (isFirst && utcNs < mReference->mBeginNs) || (isLast && utcNs > mReference->mEndNs)) {
        return false;
    }
    const qint64 begin = isFirst ? mReference->mBeginNs : mExpected[mNext - 1].mUtcNs;
    const qint64 end = isLast ? mReference->mEndNs : mExpected[mNext].mUtcNs;
    return end - begin > mResult.mSpacingNs + mResult.mSpacingNs / 2;
}

void Matcher::takeAdditional(size_t measured)
{
    if (isInGap(measured)) {
        ++mResult.mCounts.mInGaps;
        return;
    }
    ++mResult.mCounts.mAdditional;
    list(mResult.mAdditional, mMeasured[measured].mUtcNs);
}
} // namespace

qint64 spacingOf(const std::vector<Sample>& samples)
{
    if (samples.size() < 2) {
        return 0;
    }
    std::vector<qint64> intervals;
    intervals.reserve(samples.size() - 1);
    for (size_t i = 1; i < samples.size(); ++i) {
        intervals.push_back(samples[i].mUtcNs - samples[i - 1].mUtcNs);
    }
    const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>((intervals.size() - 1) / 2);
    std::nth_element(intervals.begin(), middle, intervals.end());
    return *middle;
}

Matching matchInTime(const Series& expected, const Series& measured, qint64 toleranceNs,
                     const std::optional<TimeRange>& reference)
{
    return Matcher(expected, measured, toleranceNs, reference).match();
}

} // namespace assess
