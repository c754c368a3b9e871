#pragma once

#include <QtGlobal>
#include <optional>
#include <string>
#include <string_view>

namespace measure {

/** "2026-11-25T20:00:00.000000000Z". Keeps the text of the last second, so that a row is cheap. */
class UtcText
{
public:
    /** @param utcNs since the epoch. The text is valid until the next call. */
    std::string_view of(qint64 utcNs);

private:
    qint64 mSecond = -1;
    std::string mText;
};

/**
 * Reads a date and time in UTC: "2026-11-25T20:00:00Z", "2026-11-25 20:00:00.25", with up to nine
 * digits of a second; a "Z" or " UTC" at its end may be missing.
 * @return ns since the epoch; nothing if it is not a time from 1970 to 2200
 */
std::optional<qint64> parseUtc(std::string_view text);

} // namespace measure
