#pragma once

#include <memory>
#include <vector>

#include "base/ProgressLine.h"
#include "plot/Difference.h"
#include "plot/DrawnSignal.h"
#include "plot/MomentChooser.h"

namespace plot {

/**
 * Reads the signals of a picture to their ends, in parallel: always the one that is behind in time.
 * So they can be compared, and have windows at the same times, in constant memory.
 *
 * @param drawn one or two signals
 * @param columns width of the picture
 * @param difference of the two; null for one
 */
void readSignals(const std::vector<std::unique_ptr<DrawnSignal>>& drawn, Difference* difference,
                 const MomentChooser& chooser, size_t columns, base::ProgressLine& progress);

} // namespace plot
