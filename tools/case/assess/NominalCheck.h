#pragma once

#include <string>

#include "assess/ValueTable.h"

namespace assess {

/**
 * Reports a nominal voltage that does not fit the expected voltages: limits in percent of it are
 * then too wide or too narrow. Empty if it fits or is not known.
 */
std::string nominalProblem(const ValueTable& expected, double nominalVolts);

} // namespace assess
