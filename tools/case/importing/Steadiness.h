#pragma once

#include <string>
#include <vector>

#include "importing/ImportOptions.h"
#include "importing/ImportPlan.h"
#include "importing/MappedSignal.h"

namespace importing {

/**
 * Remarks on the periods that an import repeats: one that differs from the adjacent period is not
 * steady.
 */
std::vector<std::string> remarksOnRepeated(MappedSignal& signal, const ImportPlan& plan,
                                           const ChannelMap& map, const ImportOptions& options);

} // namespace importing
