#pragma once

#include <map>

#include "assess/Assessment.h"
#include "report/NightSummary.h"

namespace expected {

/** Joins the assessments of the plays of a case: of each quantity and channel the worst. */
class CaseJudge
{
public:
    /** @param play as a reader knows it */
    void add(const std::string& play, const assess::AssessmentResult& result);

    /** A play that nothing is expected of. */
    void addNotObserved(const std::string& play, const std::string& reason);

    report::CaseAssessment finish();

private:
    /** The worst play of a quantity and channel. */
    struct Worst
    {
        assess::SeriesResult mSeries;
        std::string mPlay;
    };

    void addSeries(const std::string& play, const assess::SeriesResult& series);
    void addBad(const std::string& play, const std::string& verdict, const std::string& text);

    std::map<assess::SeriesKey, Worst> mWorst;
    report::CaseAssessment mAssessment; ///< what is wrong with whole plays, and remarks
    size_t mPlays = 0;
    size_t mBadPlays = 0;
    std::string mFirstBad; ///< in words
};

} // namespace expected
