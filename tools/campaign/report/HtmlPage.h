#pragma once

#include <string>

#include "report/NightSummary.h"
#include "report/Pictures.h"

namespace report {

/**
 * report.html: one file without scripts that needs no network. The verdict is its title and its
 * first line. Requires: a drawing for each case.
 */
std::string htmlPage(const NightSummary& night, const Pictures& pictures);

} // namespace report
