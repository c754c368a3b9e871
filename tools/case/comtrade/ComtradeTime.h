#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace comtrade {

/** A date and a time from a recording's configuration. */
struct ComtradeTime
{
    std::string mText;                ///< "2015-11-18 05:33:03.765333"
    size_t mFractionDigits = 0;       ///< as written
    bool mHasSwappedDayMonth = false; ///< day and month are not in the order of the revision
};

/**
 * Reads "18/11/2015" and "05:33:03.765333".
 *
 * @param monthFirst whether an ambiguous date has the month first
 * @return no value if they are not a date and a time; a year of two digits is one from 1970 on
 */
std::optional<ComtradeTime> parseComtradeTime(std::string_view date, std::string_view time,
                                              bool monthFirst);

} // namespace comtrade
