#pragma once

#include <QtGlobal>
#include <optional>
#include <string>
#include <string_view>

namespace assess {

/**
 * Reads the times of a table. A format is "iso" (ISO 8601: "2026-11-25T20:00:00.25+01:00", with a
 * blank for the T, a zone or none for UTC); "s", "ms", "us" or "ns" since the epoch; or a
 * pattern of %Y %m %d %H %M %S %f %b %j %z and any text between them: %f is a fraction of a
 * second of up to nine digits, %b an English month of three letters, %j the day of the year, %z a
 * zone such as +01:00 or Z.
 */
class TimeFormat
{
public:
    /** Requires: reasonNotFormat() is empty. */
    explicit TimeFormat(std::string format = "iso");

    /** Why a text is not a format; empty if it is. */
    static std::string reasonNotFormat(std::string_view format);

    /**
     * @param decimalSign of a number of seconds
     * @return ns since the epoch; nothing if the text does not have that format, or is not a time
     *         from 1970 to 2200
     */
    std::optional<qint64> parse(std::string_view text, char decimalSign) const;

    const std::string& text() const { return mFormat; }

private:
    std::string mFormat;
    qint64 mUnitNs = 0; ///< of a number; 0 for the others
};

} // namespace assess
