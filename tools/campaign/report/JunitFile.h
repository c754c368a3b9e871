#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * junit.xml: a test suite a case, a test case a play, and a suite of the night itself, which fails
 * when the night as a whole does.
 *
 * A repetition is a test case of its own and no element of a rerun: those say that one good attempt
 * is enough, and many readers ignore them. Here each repetition has to pass.
 *
 * A play that failed is a failure, one that was not finished an error; one that was not played, or
 * could not be observed, is skipped: then the suite of the night says why.
 */
std::string junitFile(const NightSummary& night);

} // namespace report
