#pragma once

#include <string>
#include <vector>

#include "assess/Assessment.h"

namespace assess {

/**
 * What is missing, additional or doubled, in words and with times. What several series miss at the
 * same time is one sentence: a lost frame.
 */
std::vector<std::string> lostValues(const std::vector<SeriesResult>& series);

} // namespace assess
