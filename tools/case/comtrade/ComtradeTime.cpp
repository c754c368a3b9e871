#include "comtrade/ComtradeTime.h"

#include <fmt/format.h>

#include <QDate>
#include <QTime>
#include <array>
#include <utility>

#include "base/Numbers.h"

namespace comtrade {

namespace {
constexpr int kMonths = 12;
constexpr size_t kYearDigits = 4;
constexpr int kFirstYearOfTwoDigits = 70;

/** Three whole numbers with separators between them. */
bool parseThree(std::string_view text, std::string_view separators, std::array<int, 3>* numbers)
{
    for (size_t i = 0; i < numbers->size(); ++i) {
        const bool isLast = i + 1 == numbers->size();
        const size_t end = isLast ? text.size() : text.find_first_of(separators);
        if (end == std::string_view::npos ||
            !base::parseNumber(text.substr(0, end), &(*numbers)[i])) {
            return false;
        }
        text.remove_prefix(isLast ? end : end + 1);
    }
    return true;
}

int wholeYear(int year)
{
    constexpr int kCentury = 100;
    if (year >= kCentury) {
        return year;
    }
    return year < kFirstYearOfTwoDigits ? 2000 + year : 1900 + year;
}

std::optional<QDate> parseDate(std::string_view text, bool monthFirst, bool* hasSwappedDayMonth)
{
    std::array<int, 3> parts{};
    if (!parseThree(text, "/-.", &parts)) {
        return std::nullopt;
    }
    if (text.find_first_of("/-.") == kYearDigits) {
        return QDate(parts[0], parts[1], parts[2]);
    }
    auto [day, month, year] = parts;
    if (monthFirst) {
        std::swap(day, month);
    }
    *hasSwappedDayMonth = month > kMonths && day <= kMonths;
    if (*hasSwappedDayMonth) {
        std::swap(day, month);
    }
    return QDate(wholeYear(year), month, day);
}
} // namespace

std::optional<ComtradeTime> parseComtradeTime(std::string_view date, std::string_view time,
                                              bool monthFirst)
{
    ComtradeTime result;
    const std::optional<QDate> day =
        parseDate(base::trimmed(date), monthFirst, &result.mHasSwappedDayMonth);
    time = base::trimmed(time);
    const size_t point = std::min(time.find('.'), time.size());
    const std::string_view fraction = time.substr(point);
    std::array<int, 3> parts{};
    // A second of 60 is a leap second.
    const bool isTime = parseThree(time.substr(0, point), ":", &parts) &&
                        QTime::isValid(parts[0], parts[1], std::min(parts[2], 59)) &&
                        parts[2] <= 60 &&
                        fraction.find_first_not_of("0123456789", 1) == std::string_view::npos;
    if (!day || !day->isValid() || !isTime) {
        return std::nullopt;
    }
    result.mFractionDigits = fraction.empty() ? 0 : fraction.size() - 1;
    result.mText = fmt::format("{} {:02}:{:02}:{:02}{}", day->toString(Qt::ISODate).toStdString(),
                               parts[0], parts[1], parts[2], fraction);
    return result;
}

} // namespace comtrade
