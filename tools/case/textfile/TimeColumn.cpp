#include "textfile/TimeColumn.h"

#include <fmt/format.h>

#include <QString>
#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "waveform/RisingTime.h"

namespace textfile {

namespace {
using Columns = std::vector<TextLayout::Column>;
using Rows = std::vector<std::vector<std::optional<double>>>;

constexpr std::array<std::pair<std::string_view, double>, 11> kTimeUnits{{{"s", 1.0},
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

constexpr std::array<std::string_view, 9> kTimeWords{
    "time", "zeit", "timestamp", "temps", "tiempo", "tempo", "tijd", "czas", "время"};

std::string inLowerCase(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size())).toLower().toStdString();
}

bool isTimeWord(const std::string& word)
{
    return std::find(kTimeWords.begin(), kTimeWords.end(), word) != kTimeWords.end();
}

/** Duration of the first rows of a column, in its unit; no value if they are not a time. */
std::optional<double> spanOf(const Rows& rows, size_t column)
{
    waveform::RisingTime<double> time;
    double last = 0.0;
    for (const std::vector<std::optional<double>>& row : rows) {
        last = row[column] ? time.next(*row[column]) : last;
    }
    return time.isTime() ? std::optional(last) : std::nullopt;
}

/**
 * Whether a column rises, as one without a heading of a time must. A coarse clock may repeat
 * values.
 */
bool rises(const Rows& rows, size_t column)
{
    return rows.size() < 2 || spanOf(rows, column) > 0.0;
}

/**
 * The best column whose name says time: preferably one that is a time, has a unit, is further left.
 */
std::optional<size_t> columnByName(const Columns& columns, const Rows& rows)
{
    std::optional<size_t> best;
    const auto score = [&](size_t i) {
        return std::pair(spanOf(rows, i).has_value(), secondsInUnit(columns[i].mUnit).has_value());
    };
    for (size_t i = 0; i < columns.size(); ++i) {
        if (isTimeName(columns[i].mName) && (!best || score(i) > score(*best))) {
            best = i;
        }
    }
    return best;
}

std::optional<size_t> columnByUnit(const Columns& columns, const Rows& rows)
{
    for (size_t i = 0; i < columns.size(); ++i) {
        if (secondsInUnit(columns[i].mUnit) && rises(rows, i)) {
            return i;
        }
    }
    const bool isFirst = columns[0].mUnit.empty() && rises(rows, 0);
    return isFirst ? std::optional(size_t{0}) : std::nullopt;
}
} // namespace

std::optional<double> secondsInUnit(std::string_view unit)
{
    const std::string lower = inLowerCase(unit);
    const auto* const found =
        std::find_if(kTimeUnits.begin(), kTimeUnits.end(),
                     [&lower](const auto& known) { return known.first == lower; });
    return found == kTimeUnits.end() ? std::nullopt : std::optional(found->second);
}

bool isTimeName(std::string_view name)
{
    if (name == "t") {
        return true; // but a "T" may be a phase
    }
    std::string word;
    for (const char c : inLowerCase(name) + " ") {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || std::isalpha(byte) != 0) {
            word += c;
        } else if (isTimeWord(word)) {
            return true;
        } else {
            word.clear();
        }
    }
    return false;
}

void splitTimeName(TextLayout::Column* column, bool isFirst)
{
    const std::string& name = column->mName;
    const size_t end = name.find_last_of("_ ");
    if (column->mUnit.empty() && end != std::string::npos && end + 1 < name.size() &&
        secondsInUnit(name.substr(end + 1)) && (isFirst || isTimeName(name.substr(0, end)))) {
        *column = {name.substr(0, end), name.substr(end + 1)};
    }
}

std::optional<size_t> findTimeColumn(const Columns& columns, const Rows& rows, std::string* reason)
{
    const std::optional<size_t> named = columnByName(columns, rows);
    if (!named) {
        const std::optional<size_t> found = columnByUnit(columns, rows);
        *reason = found ? ""
                        : "none of its columns is a time: expected one that rises, with a heading "
                          "like \"t (s)\"";
        return found;
    }
    const TextLayout::Column& time = columns[*named];
    if (!time.mUnit.empty() && !secondsInUnit(time.mUnit)) {
        *reason = fmt::format("its time column \"{}\" has the unit \"{}\": expected a unit of time",
                              time.mName, time.mUnit);
        return std::nullopt;
    }
    if (!spanOf(rows, *named)) {
        *reason = fmt::format("its time column \"{}\" does not rise", time.mName);
        return std::nullopt;
    }
    return named;
}

} // namespace textfile
