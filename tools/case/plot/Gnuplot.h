#pragma once

#include <string>

namespace plot {

/**
 * Runs gnuplot with the script on its standard input, and waits for its end.
 *
 * @return what it wrote to its standard output
 * @throws CaseError when it is missing or fails, with its message
 */
std::string runGnuplot(const std::string& script);

/** Throws CaseError when the system has no font, without which gnuplot silently leaves
 * all texts out of PNG. */
void expectFont();

} // namespace plot
