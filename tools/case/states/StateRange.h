#pragma once

#include "states/StatePlan.h"

namespace states {

/**
 * Throws CaseError for the first value of the file that can leave the range of 32 bits, if all
 * parts of its channel had their peaks together.
 */
void expectValuesInRange(const StatePlan& plan);

} // namespace states
