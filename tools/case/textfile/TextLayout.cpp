#include "textfile/TextLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <utility>

#include "base/Numbers.h"
#include "base/Text.h"

namespace textfile {

namespace {
constexpr size_t kLongestNumber = 64;

constexpr std::array<std::pair<char, const char*>, 4> kSeparators{
    {{';', "\";\""}, {'\t', "tabs"}, {',', "\",\""}, {' ', "blanks"}}};

const std::array<std::pair<std::string_view, double>, 12> kTimeUnits{{{"", 1.0},
                                                                      {"s", 1.0},
                                                                      {"sec", 1.0},
                                                                      {"seconds", 1.0},
                                                                      {"second", 1.0},
                                                                      {"msec", 1e-3},
                                                                      {"ms", 1e-3},
                                                                      {"us", 1e-6},
                                                                      {"\xC2\xB5s", 1e-6},
                                                                      {"\xCE\xBCs", 1e-6},
                                                                      {"ns", 1e-9},
                                                                      {"min", 60.0}}};

std::string_view unquoted(std::string_view text)
{
    const bool isQuoted = text.size() > 1 && text.front() == '"' && text.back() == '"';
    return isQuoted ? base::trimmed(text.substr(1, text.size() - 2)) : text;
}

/** "U1 (kV)", "U1 [kV]" and "U1/kV" have a unit. */
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

/** Every field is a number or empty, as many as in the heading, and the first is one. */
bool isRow(std::string_view line, char separator, char decimalSign, size_t count)
{
    const auto fields = textFields(line, separator);
    double number = 0.0;
    return fields.size() == count && parseTextNumber(fields[0], decimalSign, &number) &&
           std::all_of(fields.begin(), fields.end(), [&](std::string_view field) {
               return field.empty() || parseTextNumber(field, decimalSign, &number);
           });
}

/** The line before rows of numbers, of which some others may stand in front; none without rows. */
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

/** In seconds; nothing for what is no unit of time. Case means nothing. */
std::optional<double> timeUnit(std::string_view name)
{
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
        return static_cast<char>(c < 0x80 ? std::tolower(c) : c);
    });
    const auto* const unit =
        std::find_if(kTimeUnits.begin(), kTimeUnits.end(),
                     [&lower](const auto& known) { return known.first == lower; });
    return unit == kTimeUnits.end() ? std::nullopt : std::optional(unit->second);
}

std::string_view withoutBrackets(std::string_view text)
{
    const bool has = text.size() > 1 && (text.front() == '(' || text.front() == '[');
    return has ? text.substr(1, text.size() - 2) : text;
}

/** The columns by their heading, or by two lines of names and of units. */
std::vector<TextLayout::Column> columnsOf(const std::vector<std::string>& lines, size_t heading,
                                          char separator)
{
    std::vector<TextLayout::Column> columns;
    const auto fields = textFields(lines[heading], separator);
    const auto names = textFields(lines[heading > 0 ? heading - 1 : 0], separator);
    const std::string_view unit = withoutBrackets(fields[0]);
    if (heading > 0 && names.size() == fields.size() && !unit.empty() && timeUnit(unit)) {
        for (size_t i = 0; i < fields.size(); ++i) {
            columns.push_back({std::string(names[i]), std::string(withoutBrackets(fields[i]))});
        }
        return columns;
    }
    std::transform(fields.begin(), fields.end(), std::back_inserter(columns), parseHeading);
    return columns;
}

/** "time_ms" and "Time ms" have a unit. */
void splitTimeName(TextLayout::Column* time)
{
    const size_t end = time->mName.find_last_of("_ ");
    if (time->mUnit.empty() && end != std::string::npos && end + 1 < time->mName.size() &&
        timeUnit(time->mName.substr(end + 1))) {
        *time = {time->mName.substr(0, end), time->mName.substr(end + 1)};
    }
}

std::optional<TextLayout> describe(const std::vector<std::string>& lines, size_t heading,
                                   char separator, char decimalSign, std::string* reason)
{
    TextLayout layout;
    layout.mHeadingLines = heading + 1;
    layout.mSeparator = separator;
    layout.mDecimalSign = decimalSign;
    layout.mColumns = columnsOf(lines, heading, separator);
    TextLayout::Column time = layout.mColumns.front();
    splitTimeName(&time);
    layout.mColumns.erase(layout.mColumns.begin());
    layout.mTimeName = time.mName;
    const auto unit = timeUnit(time.mUnit);
    if (!unit) {
        *reason = fmt::format("the unit \"{}\" of its first column is none of time", time.mUnit);
        return std::nullopt;
    }
    layout.mTimeSeconds = *unit;
    layout.mHasTimeUnit = !time.mUnit.empty();
    return layout;
}
} // namespace

std::optional<TextLayout> findTextLayout(const std::vector<std::string>& lines, std::string* reason)
{
    if (lines.size() < 2) {
        *reason = "it has no heading line with lines of numbers behind it";
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
