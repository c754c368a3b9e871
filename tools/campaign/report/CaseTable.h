#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * cases.csv: a row a play, in their order, below a heading. Time stamps are in UTC to the
 * nanosecond, the delay from the command to the first sample is in seconds; what is not known is
 * empty.
 */
std::string caseTable(const NightSummary& night);

} // namespace report
