#pragma once

#include <vector>

#include "assess/ValueTable.h"

namespace assess {

/** An expected value with what was measured for it. */
struct Pair
{
    qint64 mUtcNs; ///< of the expected one
    double mExpected;
    double mMeasured;
};

/** What became of the values of one series. */
struct MatchCounts
{
    size_t mExpected = 0;
    size_t mMissing = 0;    ///< expected without a measured one
    size_t mAdditional = 0; ///< measured without an expected one
    size_t mLate = 0;       ///< with a time stamp that is later by more than the tolerance
    size_t mEarly = 0;
    size_t mDoubled = 0;    ///< measured once more for the same expected one
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
 * Matches by time: a measured value belongs to the expected one nearest to it, up to half the
 * interval between expected values away, or up to the tolerance where there is only one. Each
 * expected value gets the nearest of those.
 *
 * @param toleranceNs of time stamps: a value that is matched farther away is late or early
 * Requires: both series are sorted.
 */
Matching matchInTime(const Series& expected, const Series& measured, qint64 toleranceNs);

} // namespace assess
