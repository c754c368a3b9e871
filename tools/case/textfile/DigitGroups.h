#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace textfile {

/**
 * Decides whether the decimal sign of a text file separates thousands instead: in a column with
 * whole numbers up to 999, every sign has three digits after it. A single number anywhere that
 * cannot be grouped (0.5, 0.123, 1.25, 1000) shows that the sign is decimal.
 */
class DigitGroups
{
public:
    /** A field that seems to be grouped. */
    struct Field
    {
        std::string mText;
        size_t mColumn = 0; ///< index
        size_t mLine = 0;   ///< from 1
    };

    DigitGroups(char decimalSign, size_t columns) : mSign(decimalSign), mColumns(columns) {}

    /** Takes a field that is a number. */
    void add(std::string_view text, size_t column, size_t line);

    /** The first grouped field; no value if the sign is decimal. */
    std::optional<Field> firstGrouped() const;

private:
    struct Column
    {
        bool mHasWhole = false;        ///< numbers up to 999 without a sign
        std::optional<Field> mGrouped; ///< the first one
    };

    char mSign;
    std::vector<Column> mColumns;
    bool mIsDecimal = false;
};

} // namespace textfile
