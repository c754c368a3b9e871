#pragma once

#include <string>

#include "plot/Picture.h"
#include "report/ExpectedSamples.h"

namespace report {

/** Limit of drawn samples; a file has more only if there are many faults. */
inline constexpr size_t kMaxDrawnRecords = 20'000;

/**
 * The kept samples around a finding, and dashed, the expected samples: voltages and currents over
 * the time stamps. Curves have a gap where samples are missing.
 *
 * @param play null for a finding outside the plays
 * @throws CaseError if the kept samples cannot be read or drawn
 */
plot::Picture findingPicture(const std::string& folder, const NightSummary& night,
                             const PlaySummary* play, const journal::Finding& finding,
                             ExpectedSamples* expected);

} // namespace report
