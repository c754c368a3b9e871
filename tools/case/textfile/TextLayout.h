#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace textfile {

/** The layout of a text file with a heading, found from its first lines. */
struct TextLayout
{
    size_t mHeadingLines = 1; ///< before the first row, without empty ones
    char mSeparator = ',';    ///< a blank means any number of blanks
    char mDecimalSign = '.';
    size_t mTimeColumn = 0; ///< index of the field with the time
    std::string mTimeName;
    double mTimeSeconds = 1.0; ///< unit of the time column
    bool mHasTimeUnit = true;  ///< otherwise seconds are assumed
    struct Column
    {
        std::string mName;
        std::string mUnit; ///< from "U1 (kV)", "U1 [kV]", "U1/kV"; may be empty
    };
    std::vector<Column> mColumns; ///< without the time
};

/**
 * Finds the layout from the heading and the lines after it. An oscilloscope may write other lines
 * before the heading, and the units in a separate line.
 *
 * @param lines the first of the file, UTF-8, without empty ones
 * @param reason gets the reason if they are not such a file
 */
std::optional<TextLayout> findTextLayout(const std::vector<std::string>& lines,
                                         std::string* reason);

/** The fields of a line, without surrounding blanks and quotes. */
std::vector<std::string_view> textFields(std::string_view line, char separator);

/** A number with that decimal sign; false for anything else. */
bool parseTextNumber(std::string_view field, char decimalSign, double* number);

} // namespace textfile
