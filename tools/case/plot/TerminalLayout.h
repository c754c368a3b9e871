#pragma once

#include "plot/AxisTicks.h"
#include "plot/Picture.h"

namespace plot {

/** A panel on a terminal, over its whole width: gnuplot finds the margins itself. */
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
 * The panels one below the other.
 *
 * @param columns of characters
 * Borrows the picture, which must stay.
 */
std::vector<TerminalPanel> layOutOnTerminal(const Picture& picture, int columns);

} // namespace plot
