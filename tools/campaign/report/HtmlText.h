#pragma once

#include <string>
#include <string_view>

#include "report/NightSummary.h"

namespace report {

/** A text escaped for HTML, between tags or in quotes; control characters become blanks. */
std::string htmlText(std::string_view text);

/** Class name in the style sheet: "passed", "not-played". */
std::string styleOf(Outcome outcome);

/** The outcome as a coloured label. */
std::string outcomeMark(Outcome outcome);

} // namespace report
