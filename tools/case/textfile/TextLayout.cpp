#include "textfile/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "base/Numbers.h"
#include "base/Text.h"
#include "textfile/TimeColumn.h"

namespace textfile {

namespace {
constexpr size_t kLongestNumber = 64;

constexpr std::array<std::pair<char, const char*>, 4> kSeparators{
    {{';', "\";\""}, {'\t', "tabs"}, {',', "\",\""}, {' ', "blanks"}}};

std::string_view unquoted(std::string_view text)
{
    const bool isQuoted = text.size() > 1 && text.front() == '"' && text.back() == '"';
    return isQuoted ? base::trimmed(text.substr(1, text.size() - 2)) : text;
}

/** Splits a heading such as "U1 (kV)", "U1 [kV]" or "U1/kV" into name and unit. */
TextLayout::Column parseHeading(std::string_view text)
{
    for (const std::string_view brackets : {"()", "[]"}) {
        const size_t open = text.rfind(brackets[0]);
        if (open != std::string_view::npos && text.back() == brackets[1]) {
            const std::string_view unit = text.substr(open + 1, text.size() - open - 2);
            return {std::string(base::trimmed(text.substr(0, open))),
                    std::string(base::trimmed(unit))};
        }
    }
    const size_t slash = text.rfind('/');
    if (slash != std::string_view::npos) {
        return {std::string(base::trimmed(text.substr(0, slash))),
                std::string(base::trimmed(text.substr(slash + 1)))};
    }
    return {std::string(text), ""};
}

/**
 * True if there are as many fields as in the heading and all are numbers or empty, but not all
 * empty.
 */
bool isRow(std::string_view line, char separator, char decimalSign, size_t count)
{
    const auto fields = textFields(line, separator);
    double number = 0.0;
    const auto isNumber = [&](std::string_view field) {
        return parseTextNumber(field, decimalSign, &number);
    };
    return fields.size() == count && std::any_of(fields.begin(), fields.end(), isNumber) &&
           std::all_of(fields.begin(), fields.end(),
                       [&](std::string_view field) { return field.empty() || isNumber(field); });
}

/** The line right before the rows of numbers. Other lines may precede it. No value without rows. */
std::optional<size_t> findHeading(const std::vector<std::string>& lines, char separator,
                                  char decimalSign)
{
    constexpr size_t kMinColumns = 2;
    for (size_t heading = 0; heading + 1 < lines.size(); ++heading) {
        const auto names = textFields(lines[heading], separator);
        const auto isRowOfIt = [&](const std::string& line) {
            return isRow(line, separator, decimalSign, names.size());
        };
        double number = 0.0;
        if (names.size() >= kMinColumns && !parseTextNumber(names[0], decimalSign, &number) &&
            std::all_of(lines.begin() + static_cast<std::ptrdiff_t>(heading) + 1, lines.end(),
                        isRowOfIt)) {
            return heading;
        }
    }
    return std::nullopt;
}

std::string_view withoutBrackets(std::string_view text)
{
    const bool has = text.size() > 1 && (text.front() == '(' || text.front() == '[');
    return has ? text.substr(1, text.size() - 2) : text;
}

/**
 * Whether a line holds the units of the names in the line before it; the unit of the time decides.
 */
bool areUnits(const std::vector<std::string_view>& names,
              const std::vector<std::string_view>& fields)
{
    if (names.size() != fields.size()) {
        return false;
    }
    for (size_t i = 0; i < fields.size(); ++i) {
        if ((i == 0 || isTimeName(names[i])) && secondsInUnit(withoutBrackets(fields[i]))) {
            return true;
        }
    }
    return false;
}

/** The columns by their heading, or by a line of names and a line of units. */
std::vector<TextLayout::Column> columnsOf(const std::vector<std::string>& lines, size_t heading,
                                          char separator)
{
    std::vector<TextLayout::Column> columns;
    const auto fields = textFields(lines[heading], separator);
    const auto names = textFields(lines[heading > 0 ? heading - 1 : 0], separator);
    if (heading > 0 && areUnits(names, fields)) {
        for (size_t i = 0; i < fields.size(); ++i) {
            columns.push_back({std::string(names[i]), std::string(withoutBrackets(fields[i]))});
        }
        return columns;
    }
    std::transform(fields.begin(), fields.end(), std::back_inserter(columns), parseHeading);
    for (size_t i = 0; i < columns.size(); ++i) {
        splitTimeName(&columns[i], i == 0);
    }
    return columns;
}

/** The numbers of the lines from `first` on; no value for empty fields. */
std::vector<std::vector<std::optional<double>>> rowsOf(const std::vector<std::string>& lines,
                                                       size_t first, const TextLayout& layout)
{
    std::vector<std::vector<std::optional<double>>> rows;
    for (size_t i = first; i < lines.size(); ++i) {
        std::vector<std::optional<double>> row;
        for (const std::string_view field : textFields(lines[i], layout.mSeparator)) {
            double number = 0.0;
            const bool isNumber = parseTextNumber(field, layout.mDecimalSign, &number);
            row.push_back(isNumber ? std::optional(number) : std::nullopt);
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::optional<TextLayout> describe(const std::vector<std::string>& lines, size_t heading,
                                   char separator, char decimalSign, std::string* reason)
{
    TextLayout layout;
    layout.mHeadingLines = heading + 1;
    layout.mSeparator = separator;
    layout.mDecimalSign = decimalSign;
    layout.mColumns = columnsOf(lines, heading, separator);
    const auto column = findTimeColumn(layout.mColumns, rowsOf(lines, heading + 1, layout), reason);
    if (!column) {
        return std::nullopt;
    }
    const TextLayout::Column time = layout.mColumns[*column];
    layout.mColumns.erase(layout.mColumns.begin() + static_cast<std::ptrdiff_t>(*column));
    layout.mTimeColumn = *column;
    layout.mTimeName = time.mName;
    layout.mTimeSeconds = secondsInUnit(time.mUnit).value_or(1.0);
    layout.mHasTimeUnit = !time.mUnit.empty();
    return layout;
}
} // namespace

std::optional<TextLayout> findTextLayout(const std::vector<std::string>& lines, std::string* reason)
{
    if (lines.size() < 2) {
        *reason = "it has no heading line with lines of numbers after it";
        return std::nullopt;
    }
    for (const auto& [separator, name] : kSeparators) {
        for (const char decimalSign : {'.', ','}) {
            const auto heading = findHeading(lines, separator, decimalSign);
            if (decimalSign != separator && heading) {
                return describe(lines, *heading, separator, decimalSign, reason);
            }
        }
    }
    *reason =
        "its first lines are not a heading and rows of as many numbers, between \";\", \",\", "
        "tabs or blanks";
    return std::nullopt;
}

std::vector<std::string_view> textFields(std::string_view line, char separator)
{
    std::vector<std::string_view> fields = base::splitText(line, separator);
    if (separator == ' ') {
        fields.erase(std::remove(fields.begin(), fields.end(), std::string_view()), fields.end());
    }
    for (std::string_view& field : fields) {
        field = unquoted(base::trimmed(field));
    }
    return fields;
}

bool parseTextNumber(std::string_view field, char decimalSign, double* number)
{
    if (decimalSign == '.') {
        return base::parseNumber(field, number);
    }
    std::array<char, kLongestNumber> text{};
    if (field.size() > text.size() || field.find('.') != std::string_view::npos) {
        return false;
    }
    std::replace_copy(field.begin(), field.end(), text.begin(), decimalSign, '.');
    return base::parseNumber(std::string_view(text.data(), field.size()), number);
}

} // namespace textfile
