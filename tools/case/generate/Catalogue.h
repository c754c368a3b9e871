#pragma once

#include <string>
#include <vector>

namespace generate {

/**
 * Writes signals for a test bench into a directory, which is created when it is missing: for each
 * a value file and the JSON of what is in it, and a case configuration that plays them: the steady
 * one over and over as number 0, and each of the others by its number.
 *
 * @param names the signals; empty for all of the catalogue
 * Throws CaseError for an unknown name, for what cannot be written, and for a file that is there
 * with other content, which is kept.
 */
void writeCatalogue(const std::string& directory, const std::vector<std::string>& names);

} // namespace generate
