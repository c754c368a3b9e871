#pragma once

#include <charconv>
#include <cmath>
#include <string_view>

#include "base/Text.h"

namespace base {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kTwoPi = 2.0 * kPi;
inline constexpr double kRadiansPerDegree = kPi / 180.0;

inline constexpr double kSecondsPerNanosecond = 1e-9;
inline constexpr double kSecondsPerMicrosecond = 1e-6;
inline constexpr double kNanosecondsPerSecond = 1e9;

/**
 * Reads the whole text, except for blanks around it, as a finite number with a decimal point.
 * @return false for anything else; *value is then unchanged.
 */
template <typename Number>
bool parseNumber(std::string_view text, Number* value)
{
    text = trimmed(text);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(static_cast<double>(number))) {
        return false;
    }
    *value = number;
    return true;
}

} // namespace base
