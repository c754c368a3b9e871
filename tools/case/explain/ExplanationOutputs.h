#pragma once

#include <memory>

#include "base/ResultFile.h"
#include "explain/Findings.h"

namespace explain {

/**
 * The explanation for people: a table with the commands and findings between its rows.
 *
 * @param output borrowed
 * @param fileWidth characters of the longest value file's name
 * @param isLive whether each line is flushed
 */
std::unique_ptr<ExplanationOutput> explanationText(base::ResultFile& output, size_t fileWidth,
                                                   bool isLive);

/** The explanation for programs: one JSON object per line, with its "kind". */
std::unique_ptr<ExplanationOutput> explanationJson(base::ResultFile& output, bool isLive);

} // namespace explain
