#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace textfile {

/** How a text file with a heading is written, as found out from its first lines. */
struct TextLayout
{
    size_t mHeadingLines = 1; ///< before the first row, without empty ones
    char mSeparator = ',';    ///< a blank stands for any number of them
    char mDecimalSign = '.';
    size_t mTimeColumn = 0; ///< index of the field that holds the time
    std::string mTimeName;
    double mTimeSeconds = 1.0; ///< what 1 in the time column is worth
    bool mHasTimeUnit = true;  ///< else seconds are assumed
    struct Column
    {
        std::string mName;
        std::string mUnit; ///< from "U1 (kV)", "U1 [kV]", "U1/kV"; may be empty
    };
    std::vector<Column> mColumns; ///< without the time
};

/**
 * Finds out the layout from the heading and the lines after it. An oscilloscope may write lines
 * about itself before it, and the units in a line of their own.
 *
 * @param lines the first of the file, UTF-8, without empty ones
 * @param reason gets why they are no such file, when they are none
 */
std::optional<TextLayout> findTextLayout(const std::vector<std::string>& lines,
                                         std::string* reason);

/** The fields of a line, without blanks at their ends and quotes around them. */
std::vector<std::string_view> textFields(std::string_view line, char separator);

/** A number with that decimal sign; false for anything else. */
bool parseTextNumber(std::string_view field, char decimalSign, double* number);

} // namespace textfile
