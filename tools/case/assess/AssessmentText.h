#pragma once

#include <string>

#include "assess/Assessment.h"

namespace assess {

/** For a reader: the verdict, a row a series, the worst values, what was found. */
std::string textOf(const AssessmentResult& result, const LimitTable& limits);

/** The same as one JSON object, for programs. */
std::string jsonOf(const AssessmentResult& result, const LimitTable& limits);

/**
 * The same as JUnit XML: a test case a quantity and channel. What has no limit, or no value under
 * the conditions of one, is skipped; what was not observed fails.
 */
std::string junitOf(const AssessmentResult& result, const LimitTable& limits);

} // namespace assess
