#pragma once

#include <optional>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** An expected value and the measured value for it. */
struct Pair
{
    qint64 mUtcNs; ///< of the expected one
    double mExpected;
    double mMeasured;
};

/** Numbers of matched and unmatched values of one series. */
struct MatchCounts
{
    size_t mExpected = 0;
    size_t mMissing = 0;    ///< expected without a measured one
    size_t mAdditional = 0; ///< measured without an expected one
    size_t mInGaps = 0;     ///< measured while the reference has no value
    size_t mLate = 0;       ///< with a time stamp later by more than the tolerance
    size_t mEarly = 0;
    size_t mDoubled = 0;    ///< a further measured value for the same expected one
    size_t mOutOfOrder = 0; ///< in the file
};

struct Matching
{
    std::vector<Pair> mPairs; ///< in the order of time
    MatchCounts mCounts;
    std::vector<qint64> mMissing;    ///< times, at most kMaxListed
    std::vector<qint64> mAdditional; ///< likewise
    std::vector<qint64> mDoubled;
    qint64 mDistanceNs = 0; ///< mean of the time stamps of pairs: measured - expected
    qint64 mSpacingNs = 0;  ///< the median interval between expected values; 0 for fewer than two

    static constexpr size_t kMaxListed = 1000;
};

/** The median interval between samples; 0 for fewer than two. */
qint64 spacingOf(const std::vector<Sample>& samples);

/**
 * Matches by time. A measured value belongs to the nearest expected one, if it is at most half the
 * interval between expected values away, or within the tolerance if there is only one. Each
 * expected value gets the nearest of its measured values. If expected values are farther apart than
 * 1.5 times their usual interval, measured ones in between are in a gap.
 *
 * @param toleranceNs of time stamps: a matched value farther away is late or early
 * @param reference of all expected series: if this one begins later or ends earlier by more than
 *        1.5 times its interval, there is a gap, too
 * Requires: both series are sorted.
 */
Matching matchInTime(const Series& expected, const Series& measured, qint64 toleranceNs,
                     const std::optional<TimeRange>& reference = std::nullopt);

} // namespace assess
