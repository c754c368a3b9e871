#pragma once

#include <string>

#include "assess/Assessment.h"
#include "report/AssessmentFile.h"

namespace expected {

/** What a night is held against. */
struct MeasuredNight
{
    assess::ValueTable mValues; ///< of the whole night
    assess::LimitTable mLimits;
    assess::Nominal mNominal;
};

/**
 * Compares what was measured with the expected values of each play, and both with limits. A play
 * without expected values is not observed, which is never good.
 * @throws CaseError for a file in FOLDER/expected that cannot be read, or a nominal value that a
 *         limit needs and nobody has given
 */
report::NightAssessment judgeNight(const std::string& folder, const report::NightSummary& night,
                                   const MeasuredNight& measured);

} // namespace expected
