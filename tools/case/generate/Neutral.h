#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "SampleRecord.h"

namespace generate {

/** The values of all channels at one line, before they are rounded. */
using LineValues = std::array<double, kChannelCount>;

inline constexpr size_t kPhaseCount = 3;
inline constexpr size_t kFirstVoltage = 0; ///< three phases from here on, as for the currents
inline constexpr size_t kNeutralVoltage = 3;
inline constexpr size_t kFirstCurrent = 4;
inline constexpr size_t kNeutralCurrent = 7;

/** The rule for the value of a neutral channel. */
enum class NeutralRule
{
    Given, ///< as described for this channel
    Zero,
    Sum ///< of the three phases, before they are rounded
};

/** "given", "zero" or "sum"; none for another text. */
inline std::optional<NeutralRule> neutralRuleNamed(std::string_view name)
{
    if (name == "sum") {
        return NeutralRule::Sum;
    }
    if (name == "zero") {
        return NeutralRule::Zero;
    }
    return name == "given" ? std::optional(NeutralRule::Given) : std::nullopt;
}

/** The rules of both neutral channels. */
struct Neutral
{
    NeutralRule mCurrent = NeutralRule::Given;
    NeutralRule mVoltage = NeutralRule::Given;

    /** Sets the neutral of additive values: samples, phasors, upper bounds. */
    template <typename Values>
    void applyTo(Values& values) const
    {
        apply(mVoltage, kFirstVoltage, kNeutralVoltage, values);
        apply(mCurrent, kFirstCurrent, kNeutralCurrent, values);
    }

private:
    template <typename Values>
    static void apply(NeutralRule rule, size_t first, size_t neutral, Values& values)
    {
        if (rule == NeutralRule::Sum) {
            values[neutral] = values[first] + values[first + 1] + values[first + 2];
        } else if (rule == NeutralRule::Zero) {
            values[neutral] = {};
        }
    }
};

} // namespace generate
