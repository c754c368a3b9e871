#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace comtrade {

/** A date and a time as a recording's configuration gives them. */
struct ComtradeTime
{
    std::string mText;                ///< "2015-11-18 05:33:03.765333"
    size_t mFractionDigits = 0;       ///< as written
    bool mHasSwappedDayMonth = false; ///< day and month are not in the order of the revision
};

/**
 * Reads "18/11/2015" and "05:33:03.765333".
 *
 * @param monthFirst what stands first in a date that could be read both ways
 * @return nothing when they are no date and time. A year of two digits is one from 1970 on.
 */
std::optional<ComtradeTime> parseComtradeTime(std::string_view date, std::string_view time,
                                              bool monthFirst);

} // namespace comtrade
