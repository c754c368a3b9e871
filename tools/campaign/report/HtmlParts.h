#pragma once

#include <string>

#include "report/NightSummary.h"
#include "report/Pictures.h"

namespace report {

/** The parts of the page as HTML. A part without content is empty. */
std::string numbersPart(const NightSummary& night);
std::string findingsPart(const NightSummary& night, const Pictures& pictures);
std::string casesPart(const NightSummary& night, const Pictures& pictures);
std::string notObservedPart(const NightSummary& night, const Pictures& pictures);
std::string remarksPart(const NightSummary& night);
std::string environmentPart(const NightSummary& night);

/** The picture with its alternative text, or why it is missing. */
std::string figureOf(const Drawing& drawing, const std::string& what);

/** "min 12.3 ms, median ...", or "-". */
std::string delayText(const std::optional<DelaySpread>& delays);

} // namespace report
