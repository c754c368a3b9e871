#pragma once

#include <string_view>

#include "states/StatePlan.h"

namespace states {

/**
 * Throws CaseError for what the parser of TOML cannot judge: characters beyond ASCII outside of
 * comments, and strings in three quotes, which no key has a use for.
 */
void expectReadable(const StatePlan& plan, std::string_view text);

/** Of the first header whose name begins with what no name can begin with; 1:1 where none does. */
Location headerLocation(std::string_view text);

} // namespace states
