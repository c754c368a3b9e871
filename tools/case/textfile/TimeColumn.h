#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "textfile/TextLayout.h"

namespace textfile {

/** A unit of time in s; no value for any other unit. Case is ignored. */
std::optional<double> secondsInUnit(std::string_view unit);

/** Whether a column with this name has the time: "t", "Time", "Zeit", "Sample time", ... */
bool isTimeName(std::string_view name);

/** "time_ms" and "Time ms" become a name and a unit; in the first column "x_ms" too. */
void splitTimeName(TextLayout::Column* column, bool isFirst);

/**
 * Finds the column with the time: by its name, or else the first one with a unit of time, or else
 * the first column if it has no unit. It has to rise in the first rows.
 *
 * @param columns of the heading, in which splitTimeName() has been applied
 * @param rows the values of the first rows, a field for each column; no value for an empty field
 * @param reason gets the reason if there is none
 */
std::optional<size_t> findTimeColumn(const std::vector<TextLayout::Column>& columns,
                                     const std::vector<std::vector<std::optional<double>>>& rows,
                                     std::string* reason);

} // namespace textfile
