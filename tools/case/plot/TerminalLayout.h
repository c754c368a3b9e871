#pragma once

#include "plot/AxisTicks.h"
#include "plot/Picture.h"

namespace plot {

/** A panel over the whole width of a terminal; gnuplot chooses the margins. */
struct TerminalPanel
{
    std::string mTitle;
    Axis mTime;
    Axis mValues;
    std::vector<std::string> mNames; ///< of the curves
    std::vector<Mark> mMarks;
    const Panel* mPanel; ///< borrowed from the picture
};

/**
 * The panels from top to bottom.
 *
 * @param columns width in characters
 * Borrows the picture, which must outlive them.
 */
std::vector<TerminalPanel> layOutOnTerminal(const Picture& picture, int columns);

} // namespace plot
