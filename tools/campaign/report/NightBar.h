#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * The night as a bar in HTML, with a time axis and a legend. Failed plays are drawn on top, higher,
 * and wide enough to be visible. Empty for a night that never began.
 */
std::string nightBar(const NightSummary& night);

} // namespace report
