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
 * Writes the reports of a night from what its folder has, be it over or cut off, over those that
 * are there from before.
 *
 * @return what the night came to; statusOf() and verdictText() tell it
 * @throws CaseError when the journal cannot be read, or a report cannot be written
 */
NightSummary writeReports(const std::string& folder);

} // namespace report
