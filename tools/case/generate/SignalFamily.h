#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "generate/WaveParameters.h"

namespace generate {

/** The harmonics that the family "harmonics" has a parameter for, h2 to h50. */
inline constexpr int kHighestNamedOrder = 50;

/** Values of a family's parameters, by their names. */
using Settings = std::map<std::string, double, std::less<>>;

/** One parameter of a family of signals. */
struct FamilyParameter
{
    std::string mName;
    double mDefault;
    double mLeast;
    double mMost;
    std::string mMeaning; ///< with its unit
    bool mIsWhole = false;

    /** Whether it is a value of the parameter. */
    bool accepts(double value) const;
};

/** Signals that differ in numbers only. */
struct SignalFamily
{
    std::string_view mName;
    std::vector<FamilyParameter> mParameters;

    /**
     * Adds the signal to a wave, and sets its frequency and duration.
     * Requires: settings has all parameters, each in its range.
     */
    void (*mApply)(const Settings& settings, WaveParameters& wave);

    /** Null where the family has no such parameter. */
    const FamilyParameter* find(std::string_view parameter) const;
};

/** All families, in the order in which people read about them. */
const std::vector<SignalFamily>& signalFamilies();

/** Requires: there is a family of that name. */
const SignalFamily& familyNamed(std::string_view name);

} // namespace generate
