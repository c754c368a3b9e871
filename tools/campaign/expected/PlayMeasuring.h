#pragma once

#include <string>
#include <vector>

#include "report/NightSummary.h"

/** What should be measured in the plays of a night, and what somebody says that he measured. */
namespace expected {

/**
 * Measures the recordings of the plays that passed, as vx-case measure does, writes
 * FOLDER/expected/NAME-PLAY.csv and removes the recording. What is there already is kept.
 *
 * Done when the night is over: measuring takes the time that the stream needs.
 *
 * @return remarks: what had to be assumed, and why a play that passed has no expected values
 */
std::vector<std::string> measurePlays(const std::string& folder, const report::NightSummary& night);

} // namespace expected
