#pragma once

#include <string>

#include "assess/Assessment.h"
#include "report/AssessmentFile.h"

namespace expected {

/** What a device measured in a night, and the limits for it. */
struct MeasuredNight
{
    assess::ValueTable mValues; ///< of the whole night
    assess::LimitTable mLimits;
    assess::Nominal mNominal;
};

/**
 * Compares the measured values with the expected values of each play, and applies the limits. A
 * play without expected values is not observed, and so not good.
 * @throws CaseError for a file in FOLDER/expected that cannot be read, or a missing nominal value
 *         that a limit needs
 */
report::NightAssessment judgeNight(const std::string& folder, const report::NightSummary& night,
                                   const MeasuredNight& measured);

} // namespace expected
