#pragma once

#include <string>
#include <string_view>

#include "states/StatePlan.h"

namespace states {

/**
 * Reads a file of states, in TOML. Throws CaseError with file, line and column for what is wrong
 * in it: unknown keys, values out of range, what contradicts something else, and values that can
 * leave the range of 32 bits.
 */
StatePlan readStates(const std::string& path);

/** The same for a text. @param name of the file, as messages give it */
StatePlan parseStates(std::string_view text, const std::string& name);

} // namespace states
