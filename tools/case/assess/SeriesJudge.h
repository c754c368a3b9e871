#pragma once

#include "assess/Assessment.h"
#include "assess/Situations.h"

namespace assess {

/** Compares the values of one series with its limits. Borrows all its arguments. */
class SeriesJudge
{
public:
    /** Throws CaseError if a limit needs a nominal value that is not known. */
    SeriesJudge(const SeriesKey& key, const LimitTable& limits, const Nominal& nominal,
                const Situations& situations, qint64 spacingNs);

    bool hasLimit() const { return !mLimits.empty(); }

    /** @param limit output: the row that applies, or null; may be null itself */
    JudgedValue judge(const Pair& pair, const Limit** limit) const;

private:
    /** A row, with everything that does not depend on the value. */
    struct Row
    {
        const Limit* mLimit;
        double mFrom;
        double mTo;
        qint64 mEdgeNs;  ///< -1: no condition
        qint64 mAfterNs; ///< likewise
        double mFixed;   ///< the limit without its percent of the reading
    };

    Row rowOf(const Limit& limit, const std::string& name, const Nominal& nominal,
              qint64 spacingNs) const;
    bool applies(const Row& row, const Pair& pair) const;

    const SeriesKey& mKey;
    const Situations& mSituations;
    bool mIsAngle;
    qint64 mIntervalNs;
    std::vector<Row> mLimits;
};

} // namespace assess
