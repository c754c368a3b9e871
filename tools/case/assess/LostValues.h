#pragma once

#include <string>
#include <vector>

#include "assess/Assessment.h"

namespace assess {

/**
 * Missing, additional and doubled values, in words and with times. If several series miss values at
 * the same time, this is one sentence: a lost frame.
 */
std::vector<std::string> lostValues(const std::vector<SeriesResult>& series);

} // namespace assess
