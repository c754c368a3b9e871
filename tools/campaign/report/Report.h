#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/** The names of the reports in the folder of a night. */
inline constexpr const char* kJournalFile = "journal.jsonl";
inline constexpr const char* kTableFile = "cases.csv";
inline constexpr const char* kJunitFile = "junit.xml";
inline constexpr const char* kPageFile = "report.html";

/**
 * Writes the reports of a night from the files in its folder, and replaces old reports. The night
 * may be over, cut off or still running.
 *
 * @return the summary of the night, for statusOf() and verdictText()
 * @throws CaseError if the journal cannot be read, or a report cannot be written
 */
NightSummary writeReports(const std::string& folder);

} // namespace report
