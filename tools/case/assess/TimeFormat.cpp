#include "assess/TimeFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
constexpr std::array<std::pair<std::string_view, qint64>, 4> kTimeNumbers{
    {{"s", waveform::kSecondInNs}, {"ms", 1'000'000}, {"us", 1000}, {"ns", 1}}};
constexpr std::string_view kPatternLetters = "YmdHMSfbjz%";
constexpr std::array<std::string_view, 12> kMonths{"jan", "feb", "mar", "apr", "may", "jun",
                                                   "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr int kFirstYear = 1970;
constexpr int kEndYear = 2200;
constexpr qint64 kEndSeconds = 7'258'118'400; ///< of the year 2200
constexpr qint64 kSecondsPerDay = 86400;
constexpr qint64 kSecondsPerMinute = 60;
constexpr size_t kFractionDigits = 9;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/** Days from 1970-01-01 to the first of the month in the Gregorian calendar. */
qint64 daysToMonth(int year, int month)
{
    // With years that begin in March, the leap day is the last day of a year.
    const qint64 y = month <= 2 ? year - 1 : year;
    const qint64 m = (month + 9) % 12;
    constexpr qint64 kDaysToEpoch = 719468;
    return 365 * y + y / 4 - y / 100 + y / 400 + (153 * m + 2) / 5 - kDaysToEpoch;
}

/**
 * Takes parts of a time from the front of a text. Each operation is false if its part is missing.
 */
class TimeParser
{
public:
    explicit TimeParser(std::string_view text) : mText(text) {}

    bool isAtEnd() const { return mText.empty(); }
    char next() const { return mText.empty() ? '\0' : mText.front(); }

    bool takeCharacter(char c)
    {
        if (next() != c || mText.empty()) {
            return false;
        }
        mText.remove_prefix(1);
        return true;
    }

    bool take(char letter);
    std::optional<qint64> time() const;

private:
    bool takeNumber(size_t maxDigits, int min, int max, int* number);
    bool takeFraction();
    bool takeMonthName();
    bool takeZone();

    std::string_view mText;
    int mYear = kFirstYear;
    int mMonth = 1;
    int mDay = 1;
    int mDayOfYear = 0; ///< 0: not given
    int mHour = 0;
    int mMinute = 0;
    int mSecond = 0;
    qint64 mFractionNs = 0;
    qint64 mZoneSeconds = 0;
};

bool TimeParser::takeNumber(size_t maxDigits, int min, int max, int* number)
{
    size_t digits = 0;
    int value = 0;
    while (digits < maxDigits && digits < mText.size() && isDigit(mText[digits])) {
        value = 10 * value + (mText[digits++] - '0');
    }
    mText.remove_prefix(digits);
    *number = value;
    return digits > 0 && value >= min && value <= max;
}

bool TimeParser::takeFraction()
{
    qint64 value = 0;
    size_t digits = 0;
    while (digits < mText.size() && isDigit(mText[digits])) {
        if (digits < kFractionDigits) {
            value = 10 * value + (mText[digits] - '0');
        }
        ++digits;
    }
    for (size_t i = digits; i < kFractionDigits; ++i) {
        value *= 10;
    }
    mText.remove_prefix(digits);
    mFractionNs = value;
    return digits > 0;
}

bool TimeParser::takeMonthName()
{
    constexpr size_t kLetters = 3;
    std::string name(mText.substr(0, kLetters));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    const auto* const found = std::find(kMonths.begin(), kMonths.end(), name);
    mMonth = static_cast<int>(found - kMonths.begin()) + 1;
    mText.remove_prefix(std::min(kLetters, mText.size()));
    return found != kMonths.end();
}

/** Takes a zone: "Z", "+01:00", "+0100" or "+01". */
bool TimeParser::takeZone()
{
    if (takeCharacter('Z') || takeCharacter('z')) {
        return true;
    }
    const bool isWest = next() == '-';
    int hours = 0;
    int minutes = 0;
    if ((!takeCharacter('+') && !takeCharacter('-')) || !takeNumber(2, 0, 14, &hours)) {
        return false;
    }
    const bool hasMinutes = takeCharacter(':') || isDigit(next());
    if (hasMinutes && !takeNumber(2, 0, 59, &minutes)) {
        return false;
    }
    mZoneSeconds = (isWest ? -1 : 1) * kSecondsPerMinute * (60 * hours + minutes);
    return true;
}

bool TimeParser::take(char letter)
{
    switch (letter) {
        case 'Y':
            return takeNumber(4, kFirstYear, kEndYear - 1, &mYear);
        case 'm':
            return takeNumber(2, 1, 12, &mMonth);
        case 'd':
            return takeNumber(2, 1, 31, &mDay);
        case 'H':
            return takeNumber(2, 0, 23, &mHour);
        case 'M':
            return takeNumber(2, 0, 59, &mMinute);
        case 'S':
            return takeNumber(2, 0, 60, &mSecond);
        case 'j':
            return takeNumber(3, 1, 366, &mDayOfYear);
        case 'f':
            return takeFraction();
        case 'b':
            return takeMonthName();
        case 'z':
            return takeZone();
        default:
            return takeCharacter(letter);
    }
}

std::optional<qint64> TimeParser::time() const
{
    const qint64 month = daysToMonth(mYear, mMonth);
    const qint64 nextMonth =
        mMonth == 12 ? daysToMonth(mYear + 1, 1) : daysToMonth(mYear, mMonth + 1);
    if (mDay > nextMonth - month) {
        return std::nullopt;
    }
    const qint64 day = mDayOfYear > 0 ? daysToMonth(mYear, 1) + mDayOfYear - 1 : month + mDay - 1;
    const qint64 minutes = qint64{mHour} * 60 + mMinute;
    const qint64 seconds =
        day * kSecondsPerDay + minutes * kSecondsPerMinute + mSecond - mZoneSeconds;
    if (seconds < 0 || seconds >= kEndSeconds) {
        return std::nullopt;
    }
    return seconds * waveform::kSecondInNs + mFractionNs;
}

std::optional<qint64> parseIso(std::string_view text)
{
    TimeParser parser(text);
    const bool hasDate = parser.take('Y') && parser.takeCharacter('-') && parser.take('m') &&
                         parser.takeCharacter('-') && parser.take('d');
    const bool hasTime = hasDate && (parser.takeCharacter('T') || parser.takeCharacter(' ')) &&
                         parser.take('H') && parser.takeCharacter(':') && parser.take('M');
    if (!hasTime || (parser.takeCharacter(':') && !parser.take('S'))) {
        return std::nullopt;
    }
    if ((parser.takeCharacter('.') || parser.takeCharacter(',')) && !parser.take('f')) {
        return std::nullopt;
    }
    if (!parser.isAtEnd() && (!parser.take('z') || !parser.isAtEnd())) {
        return std::nullopt;
    }
    return parser.time();
}

std::optional<qint64> parsePattern(std::string_view text, std::string_view pattern)
{
    TimeParser parser(text);
    for (size_t i = 0; i < pattern.size(); ++i) {
        const bool isPart = pattern[i] == '%' && i + 1 < pattern.size();
        if (isPart ? !parser.take(pattern[++i]) : !parser.takeCharacter(pattern[i])) {
            return std::nullopt;
        }
    }
    return parser.isAtEnd() ? parser.time() : std::nullopt;
}

/** Parses a number of units since the epoch exactly; a double would round it. */
std::optional<qint64> parseCount(std::string_view text, char decimalSign, qint64 unitNs)
{
    const size_t sign = std::min(text.find(decimalSign), text.size());
    constexpr size_t kMaxDigits = 19;
    if (sign == 0 || sign > kMaxDigits || sign + 1 == text.size()) {
        return std::nullopt;
    }
    qint64 value = 0;
    for (const char c : text.substr(0, sign)) {
        if (!isDigit(c) || value > (kEndSeconds * waveform::kSecondInNs) / unitNs / 10) {
            return std::nullopt;
        }
        value = 10 * value + (c - '0');
    }
    qint64 nanoseconds = value * unitNs;
    qint64 place = unitNs / 10;
    for (const char c : text.substr(std::min(sign + 1, text.size()))) {
        if (!isDigit(c)) {
            return std::nullopt;
        }
        nanoseconds += place * (c - '0');
        place /= 10;
    }
    return nanoseconds < kEndSeconds * waveform::kSecondInNs ? std::optional(nanoseconds)
                                                             : std::nullopt;
}
} // namespace

TimeFormat::TimeFormat(std::string format) : mFormat(std::move(format))
{
    for (const auto& [name, unitNs] : kTimeNumbers) {
        mUnitNs = name == mFormat ? unitNs : mUnitNs;
    }
}

std::string TimeFormat::reasonNotFormat(std::string_view format)
{
    const auto isNumber = [format](const auto& it) { return it.first == format; };
    if (format == "iso" || std::any_of(kTimeNumbers.begin(), kTimeNumbers.end(), isNumber)) {
        return "";
    }
    if (format.find('%') == std::string_view::npos) {
        return "expected iso, s, ms, us, ns or a pattern such as %d.%m.%Y %H:%M:%S.%f";
    }
    for (size_t i = format.find('%'); i < format.size(); i = format.find('%', i + 2)) {
        if (i + 1 >= format.size() || kPatternLetters.find(format[i + 1]) == std::string::npos) {
            return fmt::format("'{}' is unknown; expected %Y %m %d %H %M %S %f %b %j %z or %%",
                               format.substr(i, 2));
        }
    }
    return format.find("%Y") == std::string_view::npos ? "expected a year, %Y, in it" : "";
}

std::optional<qint64> TimeFormat::parse(std::string_view text, char decimalSign) const
{
    text = base::trimmed(text);
    if (mUnitNs > 0) {
        return parseCount(text, decimalSign, mUnitNs);
    }
    return mFormat == "iso" ? parseIso(text) : parsePattern(text, mFormat);
}

} // namespace assess
