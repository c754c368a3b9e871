#pragma once

#include <string>
#include <vector>

#include "report/NightSummary.h"

/** Expected values of the plays of a night, and the comparison with what a device measured. */
namespace expected {

/**
 * Measures the recordings of the plays that passed, as vx-case measure does, writes
 * FOLDER/expected/NAME-PLAY.csv and removes the recording. Existing files are kept.
 *
 * To be called when the night is over, because the stream needs the computing time until then.
 *
 * @return remarks: assumptions, and why a passed play has no expected values
 */
std::vector<std::string> measurePlays(const std::string& folder, const report::NightSummary& night);

} // namespace expected
