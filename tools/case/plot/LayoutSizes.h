#pragma once

#include <cstddef>

namespace plot {

/** Sizes shared by the parts of a layout, in its units. */

/** Mean width of a letter, and height of a line of text. */
inline constexpr double kLetterWidth = 8.5;
inline constexpr double kLineHeight = 18.0;

/** Letter width and line height of the title. */
inline constexpr double kTitleLetterWidth = 12.75;
inline constexpr double kTitleHeight = 27.0;

/** Distance between an axis and the numbers at its left. */
inline constexpr double kBesideAxis = 11.0;

} // namespace plot
