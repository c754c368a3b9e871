#pragma once

#include <string>
#include <vector>

#include "plot/Layout.h"
#include "plot/TerminalLayout.h"

namespace plot {

/** The format of a picture file. */
enum class PictureFormat
{
    Svg,
    Png
};

/**
 * The gnuplot script of a layout, including the data. Only colours and line styles are decided
 * here. gnuplot writes the picture to its standard output. Any text is drawn literally.
 */
std::string gnuplotScript(const Layout& layout, PictureFormat format);

/** The same on a terminal, as characters. */
std::string gnuplotScript(const std::vector<TerminalPanel>& panels, int columns, bool hasColours);

} // namespace plot
