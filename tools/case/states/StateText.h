#pragma once

#include <optional>
#include <string_view>

#include "states/StatePlan.h"

namespace states {

inline constexpr double kMaxValue = 1e9; ///< volts or amperes; the scale may allow less
inline constexpr double kMaxDegrees = 1e6;

/** A text such as "230@-5". */
struct ValueText
{
    double mValue;
    std::optional<double> mDegrees;
};

/** Nothing for any other text. */
std::optional<ValueText> parseValue(std::string_view text);

/** A text such as "A@90"; nothing for any other. */
std::optional<PointOnWave> parsePoint(std::string_view text);

/** A text such as "5:3%@0"; nothing for any other. */
std::optional<StateHarmonic> parseHarmonic(std::string_view text);

/**
 * Throws CaseError for texts that the TOML parser would accept: non-ASCII characters outside
 * comments, and strings in three quotes, which no key needs.
 */
void expectReadable(const std::string& fileName, std::string_view text);

/** Location of the first header with an invalid first character in its name; 1:1 if none has. */
Location headerLocation(std::string_view text);

} // namespace states
