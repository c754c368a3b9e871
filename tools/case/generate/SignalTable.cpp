#include "generate/SignalTable.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/NearestName.h"

namespace generate {

namespace {
constexpr bool kNotInCatalogue = false; ///< not in the catalogue: too long, or similar to others

// doc/catalogue.md gives the sources of the values.
const std::vector<Signal> kSignals{
    {"steady-50hz", FamilyKind::Steady, "230 V and 5 A at 50 Hz", {}},
    {"steady-60hz", FamilyKind::Steady, "230 V and 5 A at 60 Hz", {{"frequency", 60}}},

    {"dip-0-half-50hz",
     FamilyKind::Event,
     "dip to 0 % for half a period (IEC 61000-4-11, classes 2 and 3)",
     {{"percent", 0}, {"periods", 0.5}}},
    {"dip-0-one-50hz",
     FamilyKind::Event,
     "dip to 0 % for a period (IEC 61000-4-11, classes 2 and 3)",
     {{"percent", 0}, {"periods", 1}}},
    {"dip-70-25-50hz",
     FamilyKind::Event,
     "dip to 70 % for 25 periods (IEC 61000-4-11, classes 2 and 3)",
     {{"percent", 70}, {"periods", 25}}},
    {"dip-40-10-50hz",
     FamilyKind::Event,
     "dip to 40 % for 10 periods (IEC 61000-4-11, class 3)",
     {{"percent", 40}, {"periods", 10}}},
    {"dip-80-250-50hz",
     FamilyKind::Event,
     "dip to 80 % for 250 periods (IEC 61000-4-11, class 3)",
     {{"percent", 80}, {"periods", 250}}},
    {"interruption-250-50hz",
     FamilyKind::Event,
     "interruption for 250 periods (IEC 61000-4-11, classes 2 and 3)",
     {{"percent", 0}, {"periods", 250}}},
    {"dip-0-half-60hz",
     FamilyKind::Event,
     "dip to 0 % for half a period at 60 Hz (IEC 61000-4-11, classes 2 and 3)",
     {{"frequency", 60}, {"percent", 0}, {"periods", 0.5}}},
    {"dip-0-one-60hz",
     FamilyKind::Event,
     "dip to 0 % for a period at 60 Hz (IEC 61000-4-11, classes 2 and 3)",
     {{"frequency", 60}, {"percent", 0}, {"periods", 1}}},
    {"dip-70-30-60hz",
     FamilyKind::Event,
     "dip to 70 % for 30 periods at 60 Hz (IEC 61000-4-11, classes 2 and 3)",
     {{"frequency", 60}, {"percent", 70}, {"periods", 30}}},
    {"dip-40-12-60hz",
     FamilyKind::Event,
     "dip to 40 % for 12 periods at 60 Hz (IEC 61000-4-11, class 3)",
     {{"frequency", 60}, {"percent", 40}, {"periods", 12}}},
    {"dip-80-300-60hz",
     FamilyKind::Event,
     "dip to 80 % for 300 periods at 60 Hz (IEC 61000-4-11, class 3)",
     {{"frequency", 60}, {"percent", 80}, {"periods", 300}}},
    {"interruption-300-60hz",
     FamilyKind::Event,
     "interruption for 300 periods at 60 Hz (IEC 61000-4-11, classes 2 and 3)",
     {{"frequency", 60}, {"percent", 0}, {"periods", 300}}},

    {"dip-0-half-50hz-at90",
     FamilyKind::Event,
     "dip to 0 % for half a period from 90 degrees on",
     {{"percent", 0}, {"periods", 0.5}, {"angle", 90}}},
    {"dip-40-10-50hz-at90",
     FamilyKind::Event,
     "dip to 40 % for 10 periods from 90 degrees on",
     {{"percent", 40}, {"periods", 10}, {"angle", 90}}},
    {"dip-40-10-50hz-1phase",
     FamilyKind::Event,
     "dip to 40 % for 10 periods in one phase",
     {{"percent", 40}, {"periods", 10}, {"phases", 1}}},
    {"dip-40-10-50hz-2phases",
     FamilyKind::Event,
     "dip to 40 % for 10 periods in two phases",
     {{"percent", 40}, {"periods", 10}, {"phases", 2}}},
    {"dip-40-10-50hz-jump",
     FamilyKind::Event,
     "dip to 40 % for 10 periods, 30 degrees behind during the event",
     {{"percent", 40}, {"periods", 10}, {"jump", -30}}},

    {"swell-110-50hz", FamilyKind::Event, "swell to 110 % for 10 periods", {{"percent", 110}}},
    {"swell-120-50hz", FamilyKind::Event, "swell to 120 % for 10 periods", {{"percent", 120}}},
    {"swell-140-50hz", FamilyKind::Event, "swell to 140 % for 10 periods", {{"percent", 140}}},
    {"swell-120-50hz-1phase",
     FamilyKind::Event,
     "swell to 120 % for 10 periods in one phase",
     {{"percent", 120}, {"phases", 1}}},
    {"swell-140-50hz-2phases-at90",
     FamilyKind::Event,
     "swell to 140 % for 10 periods in two phases from 90 degrees on",
     {{"percent", 140}, {"phases", 2}, {"angle", 90}}},
    {"swell-120-50hz-jump",
     FamilyKind::Event,
     "swell to 120 % for 10 periods, 30 degrees ahead during the event",
     {{"percent", 120}, {"jump", 30}}},

    {"frequency-42.5hz", FamilyKind::Steady, "42.5 Hz", {{"frequency", 42.5}}},
    {"frequency-45hz", FamilyKind::Steady, "45 Hz", {{"frequency", 45}}, kNotInCatalogue},
    {"frequency-47.5hz", FamilyKind::Steady, "47.5 Hz", {{"frequency", 47.5}}},
    {"frequency-49hz", FamilyKind::Steady, "49 Hz", {{"frequency", 49}}, kNotInCatalogue},
    {"frequency-51hz", FamilyKind::Steady, "51 Hz", {{"frequency", 51}}, kNotInCatalogue},
    {"frequency-52.5hz", FamilyKind::Steady, "52.5 Hz", {{"frequency", 52.5}}},
    {"frequency-55hz", FamilyKind::Steady, "55 Hz", {{"frequency", 55}}, kNotInCatalogue},
    {"frequency-57.5hz", FamilyKind::Steady, "57.5 Hz", {{"frequency", 57.5}}},
    {"frequency-step-up", FamilyKind::Frequency, "step from 50 to 51 Hz", {{"to", 51}}},
    {"frequency-step-down", FamilyKind::Frequency, "step from 50 to 49 Hz", {{"to", 49}}},
    {"frequency-ramp-up-2hz",
     FamilyKind::Frequency,
     "from 48 to 52 Hz with 1 Hz/s (IEC/IEEE 60255-118-1, P)",
     {{"from", 48}, {"to", 52}, {"rate", 1}}},
    {"frequency-ramp-down-2hz",
     FamilyKind::Frequency,
     "from 52 to 48 Hz with -1 Hz/s (IEC/IEEE 60255-118-1, P)",
     {{"from", 52}, {"to", 48}, {"rate", 1}}},
    {"frequency-ramp-up-5hz",
     FamilyKind::Frequency,
     "from 45 to 55 Hz with 1 Hz/s (IEC/IEEE 60255-118-1, M)",
     {{"from", 45}, {"to", 55}, {"rate", 1}}},
    {"frequency-ramp-down-5hz",
     FamilyKind::Frequency,
     "from 55 to 45 Hz with -1 Hz/s (IEC/IEEE 60255-118-1, M)",
     {{"from", 55}, {"to", 45}, {"rate", 1}}},

    {"amplitude-modulation-0.1hz",
     FamilyKind::Modulation,
     "amplitude by 10 % at 0.1 Hz (IEC/IEEE 60255-118-1)",
     {{"percent", 10}, {"hertz", 0.1}, {"seconds", 10}}},
    {"amplitude-modulation-1hz",
     FamilyKind::Modulation,
     "amplitude by 10 % at 1 Hz (IEC/IEEE 60255-118-1)",
     {{"percent", 10}}},
    {"amplitude-modulation-2hz",
     FamilyKind::Modulation,
     "amplitude by 10 % at 2 Hz (IEC/IEEE 60255-118-1)",
     {{"percent", 10}, {"hertz", 2}},
     kNotInCatalogue},
    {"amplitude-modulation-5hz",
     FamilyKind::Modulation,
     "amplitude by 10 % at 5 Hz (IEC/IEEE 60255-118-1)",
     {{"percent", 10}, {"hertz", 5}}},
    {"phase-modulation-0.1hz",
     FamilyKind::Modulation,
     "phase by 0.1 rad at 0.1 Hz (IEC/IEEE 60255-118-1)",
     {{"radians", 0.1}, {"hertz", 0.1}, {"seconds", 10}}},
    {"phase-modulation-1hz",
     FamilyKind::Modulation,
     "phase by 0.1 rad at 1 Hz (IEC/IEEE 60255-118-1)",
     {{"radians", 0.1}}},
    {"phase-modulation-2hz",
     FamilyKind::Modulation,
     "phase by 0.1 rad at 2 Hz (IEC/IEEE 60255-118-1)",
     {{"radians", 0.1}, {"hertz", 2}},
     kNotInCatalogue},
    {"phase-modulation-5hz",
     FamilyKind::Modulation,
     "phase by 0.1 rad at 5 Hz (IEC/IEEE 60255-118-1)",
     {{"radians", 0.1}, {"hertz", 5}}},
    {"step-amplitude-up",
     FamilyKind::Step,
     "voltages and currents to 110 % (IEC/IEEE 60255-118-1)",
     {{"percent", 110}}},
    {"step-amplitude-down",
     FamilyKind::Step,
     "voltages and currents to 90 % (IEC/IEEE 60255-118-1)",
     {{"percent", 90}}},
    {"step-phase-up",
     FamilyKind::Step,
     "voltages and currents 10 degrees ahead (IEC/IEEE 60255-118-1)",
     {{"jump", 10}}},
    {"step-phase-down",
     FamilyKind::Step,
     "voltages and currents 10 degrees behind (IEC/IEEE 60255-118-1)",
     {{"jump", -10}}},

    // Each file has whole cycles, so that it can be repeated for ten minutes.
    {"flicker-1",
     FamilyKind::Flicker,
     "1 change a minute by 2.715 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 1}, {"percent", 2.715}, {"seconds", 120}},
     kNotInCatalogue,
     1.0},
    {"flicker-2",
     FamilyKind::Flicker,
     "2 changes a minute by 2.191 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 2}, {"percent", 2.191}, {"seconds", 60}},
     kNotInCatalogue,
     1.0},
    {"flicker-7",
     FamilyKind::Flicker,
     "7 changes a minute by 1.450 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 7}, {"percent", 1.450}, {"seconds", 120}},
     kNotInCatalogue,
     1.0},
    {"flicker-39",
     FamilyKind::Flicker,
     "39 changes a minute by 0.894 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 39}, {"percent", 0.894}, {"seconds", 40}},
     kNotInCatalogue,
     1.0},
    {"flicker-110",
     FamilyKind::Flicker,
     "110 changes a minute by 0.722 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 110}, {"percent", 0.722}, {"seconds", 12}},
     true,
     1.0},
    {"flicker-1620",
     FamilyKind::Flicker,
     "1620 changes a minute by 0.407 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 1620}, {"percent", 0.407}, {"seconds", 2}},
     true,
     1.0},
    {"flicker-4000",
     FamilyKind::Flicker,
     "4000 changes a minute by 2.343 %, Pst 1 (IEC 61000-4-15)",
     {{"changes", 4000}, {"percent", 2.343}, {"seconds", 3}},
     true,
     1.0},

    {"harmonics-mix",
     FamilyKind::Harmonics,
     "orders 2 to 13 at the limits of EN 50160",
     {{"h2", 2},
      {"h3", 5},
      {"h4", 1},
      {"h5", 6},
      {"h6", 0.5},
      {"h7", 5},
      {"h8", 0.5},
      {"h9", 1.5},
      {"h10", 0.5},
      {"h11", 3.5},
      {"h12", 0.5},
      {"h13", 3}}},
    {"interharmonic-75hz", FamilyKind::Interharmonic, "5 % of 75 Hz", {{"hertz", 75}}},
    {"interharmonic-180hz", FamilyKind::Interharmonic, "5 % of 180 Hz", {{"hertz", 180}}},
    {"unbalance-negative",
     FamilyKind::Unbalance,
     "2 % of negative sequence (the limit of EN 50160)",
     {}},
    {"unbalance-zero",
     FamilyKind::Unbalance,
     "2 % of zero sequence",
     {{"negative", 0}, {"zero", 2}}},
    {"decaying-offset", FamilyKind::Offset, "an offset of the currents that decays with 50 ms", {}},
    {"oscillating-transient",
     FamilyKind::Transient,
     "900 Hz from a peak of the first voltage on, decaying",
     {{"angle", 90}}},
};

/** A signal with a single harmonic. The catalogue has some of the orders only. */
Signal harmonicOf(int order)
{
    const bool isTypical = order == 3 || order == 5 || order == kMaxNamedOrder;
    return {fmt::format("harmonic-{}", order),
            FamilyKind::Harmonics,
            fmt::format("10 % of order {} (IEC/IEEE 60255-118-1, M)", order),
            {{fmt::format("h{}", order), 10}},
            isTypical};
}

std::vector<Signal> makeTable()
{
    std::vector<Signal> table = kSignals;
    for (int order = 2; order <= kMaxNamedOrder; ++order) {
        table.push_back(harmonicOf(order));
    }
    return table;
}
} // namespace

void Signal::applyTo(WaveParameters& wave) const
{
    const SignalFamily& family = familyOf(mFamily);
    Settings settings = mSettings;
    for (const FamilyParameter& parameter : family.mParameters) {
        settings.emplace(parameter.mName, parameter.mDefault); // keeps values that are set
    }
    family.mApply(settings, wave);
}

const std::vector<Signal>& signalTable()
{
    static const std::vector<Signal> kTable = makeTable();
    return kTable;
}

const Signal* findSignal(std::string_view name)
{
    const auto found = std::find_if(signalTable().begin(), signalTable().end(),
                                    [name](const Signal& signal) { return signal.mName == name; });
    return found == signalTable().end() ? nullptr : &*found;
}

std::string unknownSignal(const std::string& name)
{
    std::vector<std::string> names;
    for (const Signal& signal : signalTable()) {
        names.push_back(signal.mName);
    }
    return fmt::format(
        "'{}': no signal has this name; the nearest are {}; vx-case generate --list shows all",
        name, fmt::join(base::nearestNames(name, names, 3), ", "));
}

} // namespace generate
