#pragma once

#include <optional>
#include <string_view>

#include "states/StatePlan.h"

namespace states {

inline constexpr double kMaxValue = 1e9; ///< volts or amperes; what fits is known with the scale
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
 * Throws CaseError for what the parser of TOML cannot judge: characters beyond ASCII outside of
 * comments, and strings in three quotes, which no key has a use for.
 */
void expectReadable(const std::string& fileName, std::string_view text);

/** Of the first header whose name begins with what no name can begin with; 1:1 where none does. */
Location headerLocation(std::string_view text);

} // namespace states
