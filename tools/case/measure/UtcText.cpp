#include "measure/UtcText.h"

#include <QDateTime>
#include <algorithm>

#include "base/Numbers.h"
#include "base/Text.h"
#include "waveform/RecordStamp.h"

namespace measure {

namespace {
constexpr size_t kSecondsEnd = 19; ///< length of "2026-11-25T20:00:00"
constexpr size_t kDigits = 9;
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2199;

std::string_view withoutZone(std::string_view text)
{
    text = base::trimmed(text);
    for (const std::string_view zone : {"Z", "UTC"}) {
        if (text.size() > zone.size() && text.substr(text.size() - zone.size()) == zone) {
            return base::trimmed(text.substr(0, text.size() - zone.size()));
        }
    }
    return text;
}

/** Parses a fraction of a second such as ".25" to ns; an empty text is 0. */
std::optional<qint64> parseFraction(std::string_view text)
{
    if (text.empty()) {
        return 0;
    }
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (text[0] != '.' || text.size() < 2 || text.size() > kDigits + 1 ||
        !std::all_of(text.begin() + 1, text.end(), isDigit)) {
        return std::nullopt;
    }
    std::string digits(text.substr(1));
    digits.resize(kDigits, '0');
    qint64 nanoseconds = 0;
    base::parseNumber(digits, &nanoseconds);
    return nanoseconds;
}
} // namespace

std::string_view UtcText::of(qint64 utcNs)
{
    qint64 second = utcNs / waveform::kSecondInNs;
    second -= second * waveform::kSecondInNs > utcNs ? 1 : 0;
    if (second != mSecond || mText.empty()) {
        mSecond = second;
        mText = QDateTime::fromSecsSinceEpoch(second, Qt::UTC)
                    .toString("yyyy-MM-ddTHH:mm:ss.000000000Z")
                    .toStdString();
    }
    qint64 rest = utcNs - second * waveform::kSecondInNs;
    for (size_t i = kSecondsEnd + kDigits; i > kSecondsEnd; --i) {
        mText[i] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    return mText;
}

std::optional<qint64> parseUtc(std::string_view text)
{
    text = withoutZone(text);
    if (text.size() < kSecondsEnd || (text[10] != 'T' && text[10] != ' ')) {
        return std::nullopt;
    }
    const QString seconds = QString::fromLatin1(text.data(), static_cast<int>(kSecondsEnd));
    const QDate date = QDate::fromString(seconds.left(10), "yyyy-MM-dd");
    const QTime time = QTime::fromString(seconds.mid(11), "HH:mm:ss");
    const auto fraction = parseFraction(text.substr(kSecondsEnd));
    if (!date.isValid() || date.year() < kFirstYear || date.year() > kLastYear || !time.isValid() ||
        !fraction) {
        return std::nullopt;
    }
    return QDateTime(date, time, Qt::UTC).toSecsSinceEpoch() * waveform::kSecondInNs + *fraction;
}

} // namespace measure
