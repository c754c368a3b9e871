#pragma once

#include <string>
#include <vector>

#include "plot/Layout.h"
#include "plot/TerminalLayout.h"

namespace plot {

/** What a picture file is. */
enum class PictureFormat
{
    Svg,
    Png
};

/**
 * What gnuplot draws a layout from, with the data: nothing is decided here but colours and lines.
 * gnuplot writes the picture to its standard output. Texts of the layout are drawn as they are,
 * whatever is in them.
 */
std::string gnuplotScript(const Layout& layout, PictureFormat format);

/** The same on a terminal, as characters. */
std::string gnuplotScript(const std::vector<TerminalPanel>& panels, int columns, bool hasColours);

} // namespace plot
