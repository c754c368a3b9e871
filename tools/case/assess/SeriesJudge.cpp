#include "assess/SeriesJudge.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "assess/QuantityNames.h"
#include "assess/Steps.h"
#include "base/CaseError.h"
#include "base/Numbers.h"

namespace assess {

namespace {
constexpr double kPercentOf = 0.01;

bool isForSeries(const Limit& limit, const SeriesKey& key, const std::string& family)
{
    const bool isQuantity = limit.mQuantity == key.mQuantity || limit.mQuantity == family;
    return isQuantity &&
           (limit.mChannels.empty() || std::find(limit.mChannels.begin(), limit.mChannels.end(),
                                                 key.mChannel) != limit.mChannels.end());
}

bool needsPercent(const Limit& limit)
{
    return limit.mNominal > 0.0 || (limit.mFrom && limit.mFrom->mIsPercent) ||
           (limit.mTo && limit.mTo->mIsPercent);
}

bool needsPeriods(const Limit& limit)
{
    return limit.mTime.mPeriods > 0.0 || (limit.mEdge && limit.mEdge->mPeriods > 0.0) ||
           (limit.mAfter && limit.mAfter->mPeriods > 0.0);
}

double boundOf(const std::optional<Bound>& bound, double otherwise, double whole)
{
    if (!bound) {
        return otherwise;
    }
    return bound->mIsPercent ? bound->mValue * kPercentOf * whole : bound->mValue;
}
} // namespace

SeriesJudge::SeriesJudge(const SeriesKey& key, const LimitTable& limits, const Nominal& nominal,
                         const Situations& situations, qint64 spacingNs)
    : mKey(key),
      mSituations(situations),
      mIsAngle(isAngle(key.mQuantity)),
      mIntervalNs(intervalNsOf(key.mQuantity))
{
    const std::string family = familyOf(key.mQuantity);
    for (const Limit& limit : limits.mLimits) {
        if (isForSeries(limit, key, family)) {
            mLimits.push_back(rowOf(limit, limits.mName, nominal, spacingNs));
        }
    }
}

SeriesJudge::Row SeriesJudge::rowOf(const Limit& limit, const std::string& name,
                                    const Nominal& nominal, qint64 spacingNs) const
{
    const double whole = nominalOf(mKey, nominal);
    if ((needsPercent(limit) && whole <= 0.0) || (needsPeriods(limit) && nominal.mHertz <= 0.0)) {
        throw base::CaseError(name + ": the limit of " + nameOf(mKey) +
                              " refers to the nominal value; expected --nominal");
    }
    const auto spanNs = [&](const std::optional<Span>& span) {
        return span ? nanosecondsOf(*span, nominal, spacingNs) : qint64{-1};
    };
    return {&limit,
            boundOf(limit.mFrom, 0.0, whole),
            boundOf(limit.mTo, std::numeric_limits<double>::infinity(), whole),
            spanNs(limit.mEdge),
            spanNs(limit.mAfter),
            limit.mAbsolute + limit.mNominal * kPercentOf * whole +
                static_cast<double>(nanosecondsOf(limit.mTime, nominal, spacingNs)) *
                    base::kSecondsPerNanosecond};
}

bool SeriesJudge::applies(const Row& row, const Pair& pair) const
{
    const double size = std::abs(pair.mExpected);
    if (size < row.mFrom || size >= row.mTo) {
        return false;
    }
    if (row.mLimit->mState && mSituations.stateAt(pair.mUtcNs) != *row.mLimit->mState) {
        return false;
    }
    if (row.mEdgeNs >= 0 && mSituations.isNearEdge(pair.mUtcNs, row.mEdgeNs)) {
        return false;
    }
    return row.mAfterNs < 0 ||
           !mSituations.overlapsEvent(pair.mUtcNs - mIntervalNs - row.mAfterNs, pair.mUtcNs);
}

JudgedValue SeriesJudge::judge(const Pair& pair, const Limit** limit) const
{
    const double difference = pair.mMeasured - pair.mExpected;
    JudgedValue value{pair.mUtcNs, pair.mExpected, pair.mMeasured,
                      mIsAngle ? wrapped(difference) : difference, 0.0};
    const auto row = std::find_if(mLimits.begin(), mLimits.end(),
                                  [&](const Row& it) { return applies(it, pair); });
    const bool hasRow = row != mLimits.end();
    if (hasRow) {
        // A limit of 0 (a percentage of 0) must not be taken for no limit.
        value.mLimit =
            std::max(row->mFixed + row->mLimit->mReading * kPercentOf * std::abs(pair.mExpected),
                     std::numeric_limits<double>::min());
    }
    if (limit != nullptr) {
        *limit = hasRow ? row->mLimit : nullptr;
    }
    return value;
}

} // namespace assess
