#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * The whole night as a bar with its times below and the meaning of its colours: HTML. What failed
 * is drawn over the rest, higher, and never narrower than can be seen. Empty for a night that never
 * began.
 */
std::string nightBar(const NightSummary& night);

} // namespace report
