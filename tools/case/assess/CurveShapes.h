#pragma once

#include <string>
#include <vector>

#include "plot/Picture.h"

namespace assess {

/** How values become lines, bars and arrows of a picture. Colours and names are the caller's. */

/**
 * No line is drawn over a time without values; a value alone becomes a dash.
 * @param longest x between two points of a line
 */
std::vector<plot::Point> splitAtGaps(const std::vector<plot::Point>& points, double longest);

/** From the origin to a point, with a head, as one line. */
std::vector<plot::Point> arrowTo(double magnitude, double degrees, double headLength);

/** Around the origin, grey, without a name. */
plot::Curve circleOf(double radius);

/** The last panel of a column, if it has this axis, else a new one below it. */
plot::Panel& panelWith(plot::WaveColumn& column, const std::string& axis);

/**
 * Turns the curves of a panel into bars from 0, and sets its range. Those of one x stand side by
 * side.
 * @param apart x between two of them
 */
void makeBars(plot::Panel& panel, double apart);

/** Sets the ranges of a column over time, whose curves and whose first and last time are there. */
void setRanges(plot::WaveColumn& column, bool hasBars);

} // namespace assess
