#pragma once

#include <map>
#include <string>

#include "report/NightSummary.h"

namespace report {

inline constexpr const char* kAssessmentFile = "assessment.json";

/** The result of vx-campaign judge for a night. */
struct NightAssessment
{
    size_t mJournalBytes = 0; ///< size of the journal; the result is not valid for another size
    std::string mLimits;      ///< name of their table
    std::map<std::string, CaseAssessment> mCases; ///< by name; those with expected values
};

/** Writes FOLDER/assessment.json and replaces an old one. Throws CaseError. */
void writeAssessment(const std::string& folder, const NightAssessment& assessment);

/**
 * Adds the content of FOLDER/assessment.json, if it exists. If it cannot be read or belongs to
 * another journal, only NightSummary::mAssessmentProblem is set.
 */
void addAssessment(const std::string& folder, size_t journalBytes, NightSummary* night);

} // namespace report
