#pragma once

#include <string>
#include <string_view>

#include "report/NightSummary.h"

namespace report {

/** A text from a file, as it stands between tags or in quotes; control characters become blanks. */
std::string htmlText(std::string_view text);

/** "passed", "not-played": as the style sheet knows it. */
std::string styleOf(Outcome outcome);

/** The outcome as a word on its colour. */
std::string outcomeMark(Outcome outcome);

} // namespace report
