#pragma once

#include "states/StatePlan.h"

namespace states {

/**
 * Throws CaseError for the first value of the file that may exceed 32 bits, if all parts of its
 * channel peak at the same time.
 */
void expectValuesInRange(const StatePlan& plan);

} // namespace states
