#pragma once

#include "plot/Picture.h"

namespace report {

/**
 * Removes points that make no visible difference: no curve moves by more than about a quarter of a
 * unit of the layout. A picture then takes about a tenth of the bytes.
 */
void thinCurves(plot::Picture* picture);

} // namespace report
