#pragma once

#include <string>
#include <vector>

namespace plot {

/** Texts of a picture are UTF-8; "_{...}" is an index, as in "U_{L1}". */

/** Whether the text has an index. */
bool hasIndex(const std::string& text);

/** The text without the markup of an index. */
std::string withoutIndex(std::string text);

/** Number of visible letters. */
size_t letterCount(const std::string& text);

/**
 * The text, shortened to its beginning, "…", and its end, which often has the phase.
 * Requires: letters >= 3, or a text that is short enough.
 */
std::string shortened(const std::string& text, size_t letters);

/**
 * The text in lines, broken after semicolons. A part between semicolons that does not fit is
 * shortened. Requires: letters >= 4.
 */
std::vector<std::string> wrappedIntoLines(const std::string& text, size_t letters);

} // namespace plot
