#pragma once

#include <string>

#include "report/NightSummary.h"
#include "report/Pictures.h"

namespace report {

/**
 * report.html: one file that needs nothing else, no script and no network. The verdict is its title
 * and its first line. Requires: a drawing a case.
 */
std::string htmlPage(const NightSummary& night, const Pictures& pictures);

} // namespace report
