#pragma once

#include <string>
#include <string_view>

#include "states/StatePlan.h"

namespace states {

/**
 * Reads a file of states in TOML. Throws CaseError with file, line and column for mistakes: unknown
 * keys, values out of range, keys that contradict each other, and values that may exceed 32 bits.
 */
StatePlan readStates(const std::string& path);

/** The same for a text. @param name of the file, for messages */
StatePlan parseStates(std::string_view text, const std::string& name);

} // namespace states
