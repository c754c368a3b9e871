#pragma once

#include <string>

namespace plot {

/**
 * Runs gnuplot with the script on its standard input, and waits for its end.
 *
 * @return its standard output
 * @throws CaseError with its message if it is missing or fails
 */
std::string runGnuplot(const std::string& script);

/**
 * Throws CaseError if the system has no font: without one, gnuplot silently leaves all texts out of
 * a PNG.
 */
void expectFont();

} // namespace plot
