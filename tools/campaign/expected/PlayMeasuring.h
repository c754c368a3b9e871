#pragma once

#include <functional>
#include <string>
#include <vector>

#include "report/NightSummary.h"

/** Expected values of the plays of a night, and the comparison with what a device measured. */
namespace expected {

struct MeasuredPlays
{
    std::vector<std::string> mRemarks; ///< assumptions, and why a play has no expected values
    size_t mLeft = 0;                  ///< plays that were not measured because of an interrupt
};

/**
 * Measures the recordings of the plays that passed, as vx-case measure does, writes
 * FOLDER/expected/NAME-PLAY.csv and removes the recording. Existing files are kept.
 *
 * To be called when the night is over, because the stream needs the computing time until then.
 *
 * @param isInterrupted is asked often; once it is true, nothing more is measured. The recordings
 *        that are left can be measured later.
 */
MeasuredPlays measurePlays(const std::string& folder, const report::NightSummary& night,
                           const std::function<bool()>& isInterrupted);

} // namespace expected
