#pragma once

#include "plot/Picture.h"

namespace report {

/**
 * Leaves out the points of all curves that nobody would miss: no curve moves by more than about a
 * quarter of a unit of the layout. A picture then takes about a tenth of the bytes.
 */
void thinCurves(plot::Picture* picture);

} // namespace report
