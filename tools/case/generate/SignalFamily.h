#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "generate/WaveParameters.h"

namespace generate {

/** The family Harmonics has a parameter for each order up to this one: h2 to h50. */
inline constexpr int kMaxNamedOrder = 50;

/** Values of a family's parameters, by their names. */
using Settings = std::map<std::string, double, std::less<>>;

/** The kind of the signals of a family. */
enum class FamilyKind
{
    Steady,
    Event,
    Step,
    Frequency,
    Modulation,
    Flicker,
    Harmonics,
    Interharmonic,
    Unbalance,
    Offset,
    Transient
};

/** One parameter of a family of signals. */
struct FamilyParameter
{
    std::string mName;
    double mDefault;
    double mMin;
    double mMax;
    std::string mMeaning; ///< with its unit
    bool mIsWhole = false;

    /** Whether the value is allowed. */
    bool accepts(double value) const;
};

/** Signals that differ only in the values of parameters. */
struct SignalFamily
{
    FamilyKind mKind;
    std::vector<FamilyParameter> mParameters;

    /**
     * Adds the signal to a wave, and sets its frequency and duration.
     * Requires: settings has all parameters, each in its range.
     */
    void (*mApply)(const Settings& settings, WaveParameters& wave);

    /** Null if the family has no such parameter. */
    const FamilyParameter* find(std::string_view parameter) const;
};

const SignalFamily& familyOf(FamilyKind kind);

} // namespace generate
