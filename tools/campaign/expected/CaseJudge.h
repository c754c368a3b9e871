#pragma once

#include <map>

#include "assess/Assessment.h"
#include "report/NightSummary.h"

namespace expected {

/** Combines the assessments of the plays of a case: the worst for each quantity and channel. */
class CaseJudge
{
public:
    /** @param play name for the reader, such as "dip1 (4 of 10)" */
    void add(const std::string& play, const assess::AssessmentResult& result);

    /** Adds a play without expected values. */
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
    report::CaseAssessment mAssessment; ///< faults of whole plays, and remarks
    size_t mPlays = 0;
    size_t mBadPlays = 0;
    std::string mFirstBad; ///< in words
};

} // namespace expected
