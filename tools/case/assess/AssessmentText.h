#pragma once

#include <string>

#include "assess/Assessment.h"

namespace assess {

/** The report for people: the verdict, a row per series, the worst values, findings and causes. */
std::string textOf(const AssessmentResult& result, const LimitTable& limits);

/** The same as one JSON object, for programs. */
std::string jsonOf(const AssessmentResult& result, const LimitTable& limits);

/**
 * The same as JUnit XML: a test case per quantity and channel. It is skipped if there is no limit,
 * or no value meets its conditions; it fails if it was not observed.
 */
std::string junitOf(const AssessmentResult& result, const LimitTable& limits);

} // namespace assess
