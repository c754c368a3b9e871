#pragma once

#include <string>

#include "plot/Picture.h"
#include "report/ExpectedSamples.h"

namespace report {

/** Of kept samples so many are drawn; a file has more only where much is wrong. */
inline constexpr size_t kMaxDrawnRecords = 20'000;

/**
 * The samples that were kept around a finding, and over them, dashed, what should have arrived.
 * Voltages and currents, over the time stamps; where samples are missing the curves have a gap.
 *
 * @param play null for a finding outside the plays
 * @throws CaseError when the kept samples cannot be read or drawn
 */
plot::Picture findingPicture(const std::string& folder, const NightSummary& night,
                             const PlaySummary* play, const journal::Finding& finding,
                             ExpectedSamples* expected);

} // namespace report
