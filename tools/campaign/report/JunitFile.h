#pragma once

#include <string>

#include "report/NightSummary.h"

namespace report {

/**
 * junit.xml: a test suite per case, a test case per play, and a suite for the night itself, which
 * fails if the night as a whole fails.
 *
 * Each repetition is a separate test case, because each one has to pass. Rerun elements would mean
 * that one good attempt is enough, and many readers ignore them.
 *
 * A failed play is a failure, an unfinished one an error. A play that was not played or not
 * observed is skipped; the suite of the night then says why.
 */
std::string junitFile(const NightSummary& night);

} // namespace report
