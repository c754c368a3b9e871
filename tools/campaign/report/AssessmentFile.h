#pragma once

#include <map>
#include <string>

#include "report/NightSummary.h"

namespace report {

inline constexpr const char* kAssessmentFile = "assessment.json";

/** What vx-campaign judge found out about a night. */
struct NightAssessment
{
    size_t mJournalBytes = 0; ///< of the journal then: with another one it holds no more
    std::string mLimits;      ///< name of their table
    std::map<std::string, CaseAssessment> mCases; ///< by name; those with expected values
};

/** Writes FOLDER/assessment.json, over one from before. Throws CaseError. */
void writeAssessment(const std::string& folder, const NightAssessment& assessment);

/**
 * Adds what FOLDER/assessment.json has, if it is there. One that cannot be read, or that is not of
 * this journal, is not added, and the night says so.
 */
void addAssessment(const std::string& folder, size_t journalBytes, NightSummary* night);

} // namespace report
