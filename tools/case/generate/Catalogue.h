#pragma once

#include <string>
#include <vector>

namespace generate {

/**
 * Writes signals for a test bench into a directory, which is created if it is missing: for each
 * signal a value file and a JSON file with its values, and a case configuration that plays them.
 * The steady signal is number 0 and is played continuously; the others have a number each.
 *
 * @param names the signals; empty for all of the catalogue
 * Throws CaseError for an unknown name, for write errors, and for an existing file with other
 * content, which is kept.
 */
void writeCatalogue(const std::string& directory, const std::vector<std::string>& names);

} // namespace generate
