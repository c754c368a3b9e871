#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * cases.csv: a heading, then a row per play in their order. Time stamps are in UTC with
 * nanoseconds, the delay from the command to the first sample is in seconds. Unknown values are
 * empty.
 */
std::string caseTable(const NightSummary& night);

} // namespace report
