#pragma once

#include <string>

#include "plot/Picture.h"

namespace plot {

/** Where a picture is drawn. */
struct Canvas
{
    enum class Kind
    {
        Svg,
        Png,
        Terminal
    };

    Kind mKind = Kind::Terminal;
    int mColumns = 80;        ///< of characters, on a terminal
    bool mHasColours = false; ///< on a terminal
};

/** What gnuplot draws the picture from, with its data; the result goes to standard output. */
std::string gnuplotScript(const Picture& picture, const Canvas& canvas);

} // namespace plot
