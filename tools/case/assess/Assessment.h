#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "assess/Limits.h"
#include "assess/Matching.h"
#include "assess/ValueTable.h"

namespace assess {

/** If several apply, the first one counts. */
enum class Verdict
{
    Beyond,      ///< a value is beyond its limit
    Incomplete,  ///< values are missing, additional, doubled, late or early
    NotObserved, ///< nothing was measured
    NotJudged,   ///< no value met the conditions of a limit
    Within,
    NoLimit, ///< the table has no limit for it
};

/** "within", "BEYOND", ... */
const char* nameOf(Verdict verdict);

/** A value that was compared. */
struct JudgedValue
{
    qint64 mUtcNs = 0;
    double mExpected = 0.0;
    double mMeasured = 0.0;
    double mError = 0.0; ///< measured - expected; for angles between -180 and 180 degrees
    double mLimit = 0.0; ///< 0: none applies

    /** The error divided by the limit; the error itself if no limit applies. */
    double errorRatio() const;
};

/**
 * The only place where an error is compared with its limit. `vx-case measure` rounds values to ten
 * digits; an error that exceeds its limit only by that rounding is within.
 */
bool isBeyond(const JudgedValue& value);

/** The result for one quantity and channel. */
struct SeriesResult
{
    SeriesKey mKey;
    std::string mUnit;
    MatchCounts mCounts;
    size_t mCompared = 0;
    size_t mJudged = 0; ///< those of them that met the conditions of a limit
    size_t mBeyond = 0;
    std::optional<JudgedValue> mLargest; ///< with the largest error relative to its limit
    std::string mLimit;                  ///< of that value, in words
    std::string mClause;
    qint64 mStampDistanceNs = 0;     ///< mean of measured - expected
    std::vector<qint64> mMissing;    ///< times, at most Matching::kMaxListed
    std::vector<qint64> mAdditional; ///< likewise
    std::vector<qint64> mDoubled;

    Verdict mVerdict = Verdict::NoLimit;
};

/** A value of a series, for the list of the worst ones. */
struct WorstValue
{
    SeriesKey mKey;
    JudgedValue mValue;
};

struct AssessmentResult
{
    Verdict mVerdict = Verdict::NotObserved;
    std::optional<qint64> mBeginUtcNs; ///< of the first expected value
    std::vector<SeriesResult> mSeries; ///< in the order of their names
    std::vector<WorstValue> mWorst;    ///< at most ten, the worst first; only with a limit
    std::vector<std::string>
        mFindings; ///< lost frames and events, a wrong nominal voltage, in words
    std::vector<std::string> mDiagnoses;  ///< possible causes, in words; nothing is corrected
    std::vector<std::string> mUnexpected; ///< measured series without expected values

    bool isGood() const { return mVerdict == Verdict::Within; }
};

/** Settings of an assessment. */
struct AssessmentOptions
{
    Nominal mNominal;                  ///< 0: that of the table of limits
    std::set<std::string> mQuantities; ///< families; empty: all
    /**
     * Measured values outside the time of the expected ones are not counted: the file of a whole
     * night is compared with the expected values of one play.
     */
    bool mIsPart = false;
};

/**
 * Compares measured values with expected ones and applies limits. Borrows the tables and the
 * limits, which must outlive it.
 *
 * A night has one Assessment per play: with its expected values, and always the same measured
 * values.
 */
class Assessment
{
public:
    /** Throws CaseError if a limit needs a nominal value that is missing. */
    Assessment(const ValueTable& expected, const ValueTable& measured, const LimitTable& limits,
               AssessmentOptions options);
    Assessment(const Assessment&) = delete;
    Assessment& operator=(const Assessment&) = delete;
    ~Assessment();

    const AssessmentResult& result() const;

    /** All compared values of a series, sorted by time, with their limits. */
    std::vector<JudgedValue> valuesOf(const SeriesKey& key) const;

private:
    class Work;
    std::unique_ptr<Work> mWork;
};

/** "BAD: 3 of 1200 values beyond their limits, 1 missing"; "good: 1200 values within their limits".
 */
std::string verdictText(const AssessmentResult& result);

} // namespace assess
