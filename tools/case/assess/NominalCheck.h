#pragma once

#include <string>

#include "assess/ValueTable.h"

namespace assess {

/**
 * Says where the expected voltages have nothing to do with the nominal one: limits in percent of
 * it are too wide or too narrow then. Empty where all is well, or not known.
 */
std::string nominalProblem(const ValueTable& expected, double nominalVolts);

} // namespace assess
