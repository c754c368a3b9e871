#include "generate/SignalFamily.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

#include "base/Numbers.h"

namespace generate {

namespace {
constexpr double kDegreesPerPeriod = 360.0;

const FamilyParameter kFrequency{"frequency", 50, 10, 400, "Hz"};
const FamilyParameter kSeconds{"seconds", 1, 0.1, 86400, "s, of the file"};
/** For signals that repeat each period: with a file of one period, commands take effect soon. */
const FamilyParameter kShortSeconds{"seconds", 0, 0, 86400, "s, of the file; 0 is one period"};
constexpr double kAsVoltages = std::numeric_limits<double>::quiet_NaN(); ///< default of currents
const FamilyParameter kPhases{"phases", 3, 1, 3, "a whole number of phases, from the first on",
                              true};
const FamilyParameter kLead{"lead", 10, 0, 10000, "undisturbed periods before it"};
const FamilyParameter kTail{"tail", 15, 0, 10000, "undisturbed periods after it"};
const FamilyParameter kAngle{"angle", 0, 0, 360, "degrees of the first phase where it begins"};

const ChannelSet kVoltages(0b0000'0111);
const ChannelSet kCurrents(0b0111'0000);

double value(const Settings& settings, std::string_view name)
{
    return settings.find(name)->second;
}

/** The value of the parameter; the fallback if it is not set. */
double valueOr(const Settings& settings, std::string_view name, double fallback)
{
    const double set = value(settings, name);
    return std::isnan(set) ? fallback : set;
}

/** The first phases of the voltages or currents, as set by "phases". */
ChannelSet phasesOf(const Settings& settings, ChannelSet all)
{
    const auto absent = size_t(std::lround(3.0 - value(settings, "phases")));
    return all & (all >> absent);
}

void applySteady(const Settings& settings, WaveParameters& wave)
{
    wave.mFrequency = float(value(settings, "frequency"));
    const double seconds = value(settings, "seconds");
    wave.mDuration = seconds > 0.0 ? seconds : 1.0 / double(wave.mFrequency);
}

/** The beginning of the event in periods. */
double beginOf(const Settings& settings, const WaveParameters& wave)
{
    const double degrees =
        std::fmod(value(settings, "angle") - wave.mChannels[0].degrees(), kDegreesPerPeriod);
    return value(settings, "lead") + degrees / kDegreesPerPeriod + (degrees < 0.0 ? 1.0 : 0.0);
}

void applyEvent(const Settings& settings, WaveParameters& wave)
{
    const double hertz = value(settings, "frequency");
    const double begin = beginOf(settings, wave);
    const double periods = value(settings, "periods");
    wave.mFrequency = float(hertz);
    wave.mDuration = (std::ceil(begin + periods) + value(settings, "tail")) / hertz;
    wave.mDisturbances.push_back({begin / hertz, periods / hertz,
                                  value(settings, "percent") / kPercent, value(settings, "jump"),
                                  phasesOf(settings, kVoltages)});
}

/** Changes the second half of the file. Each half is a whole number of periods. */
void applyStep(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    const auto hertz = double(wave.mFrequency);
    const double half = std::round(wave.mDuration * hertz) / hertz / 2.0;
    wave.mDisturbances.push_back({half, half, value(settings, "percent") / kPercent,
                                  value(settings, "jump"), kVoltages | kCurrents});
}

void applyRamp(const Settings& settings, WaveParameters& wave)
{
    const double from = value(settings, "from");
    const double to = value(settings, "to");
    const double rate = value(settings, "rate");
    const double hold = value(settings, "hold");
    const double change = rate > 0.0 ? std::abs(to - from) / rate : 0.0;
    wave.mFrequency = float(from);
    wave.mDuration = 2.0 * hold + change;
    wave.mCourse = {{hold, from}, {hold + change, to}};
}

void applyModulation(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    const double percent = value(settings, "percent");
    const double radians = value(settings, "radians");
    const double currentPercent = valueOr(settings, "current-percent", percent);
    const double currentRadians = valueOr(settings, "current-radians", radians);
    const double hertz = value(settings, "hertz");
    if (percent == currentPercent && radians == currentRadians) {
        wave.mModulations.push_back(
            {hertz, percent / kPercent, radians, ModulationShape::Sine, kVoltages | kCurrents});
        return;
    }
    wave.mModulations.push_back(
        {hertz, percent / kPercent, radians, ModulationShape::Sine, kVoltages});
    wave.mModulations.push_back(
        {hertz, currentPercent / kPercent, currentRadians, ModulationShape::Sine, kCurrents});
}

/** A fluctuation by a percentage goes up by half of it and down by half of it. */
void applyFlicker(const Settings& settings, WaveParameters& wave)
{
    constexpr double kChangesPerCycle = 2.0;
    constexpr double kSecondsPerMinute = 60.0;
    applySteady(settings, wave);
    wave.mModulations.push_back({value(settings, "changes") / kSecondsPerMinute / kChangesPerCycle,
                                 value(settings, "percent") / kPercent / 2.0, 0.0,
                                 ModulationShape::Rectangle, kVoltages});
}

void applyHarmonics(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    for (int order = 2; order <= kMaxNamedOrder; ++order) {
        const double percent = value(settings, "h" + std::to_string(order));
        if (percent > 0.0) {
            wave.mHarmonics.push_back(
                {order, percent / kPercent, 0.0, phasesOf(settings, kVoltages)});
        }
    }
}

void applyInterharmonic(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    wave.mTones.push_back({0.0, value(settings, "hertz"), value(settings, "percent") / kPercent,
                           0.0, kLasting, phasesOf(settings, kVoltages)});
}

/** In the first voltage, the three sequences are in phase. */
void applyUnbalance(const Settings& settings, WaveParameters& wave)
{
    constexpr double kThird = 120.0;
    applySteady(settings, wave);
    const WaveChannel first = wave.mChannels[0];
    for (size_t i = 0; i < 3; ++i) {
        const double turn = double(i) * kThird * base::kRadiansPerDegree;
        const std::complex<double> sum = std::polar(1.0, -turn) +
                                         std::polar(value(settings, "negative") / kPercent, turn) +
                                         value(settings, "zero") / kPercent;
        wave.mChannels[i] = {first.mAmplitude * std::abs(sum),
                             first.mPhase + std::arg(sum) / base::kRadiansPerDegree};
    }
}

void addDecay(const Settings& settings, double hertz, double phase, ChannelSet channels,
              WaveParameters& wave)
{
    applySteady(settings, wave);
    // Begins at a line, so that the first sample has exactly the phase.
    const double begin = std::round(beginOf(settings, wave) * kSamplesPerPeriod);
    wave.mTones.push_back({begin / wave.samplesPerSecond(), hertz,
                           value(settings, "percent") / kPercent, phase, value(settings, "tau"),
                           phasesOf(settings, channels)});
}

void applyOffset(const Settings& settings, WaveParameters& wave)
{
    constexpr double kCosine = 90.0;
    addDecay(settings, 0.0, kCosine, kCurrents, wave);
}

void applyTransient(const Settings& settings, WaveParameters& wave)
{
    addDecay(settings, value(settings, "hertz"), 0.0, kVoltages, wave);
}

std::vector<FamilyParameter> harmonicParameters()
{
    std::vector<FamilyParameter> parameters{kFrequency, kShortSeconds, kPhases};
    for (int order = 2; order <= kMaxNamedOrder; ++order) {
        parameters.push_back({"h" + std::to_string(order), 0, 0, 100, "% of that order"});
    }
    return parameters;
}
const std::vector<SignalFamily> kFamilies{
    {FamilyKind::Steady, {kFrequency, kShortSeconds}, applySteady},
    {FamilyKind::Event,
     {kFrequency,
      {"percent", 70, 0, 1000, "% of the voltage, which remain"},
      {"periods", 10, 0.01, 100000, "duration in periods"},
      {"jump", 0, -360, 360, "degrees of phase jump during the event"},
      kPhases,
      kAngle,
      kLead,
      kTail},
     applyEvent},
    {FamilyKind::Step,
     {kFrequency,
      kSeconds,
      {"percent", 100, 0, 1000, "% of voltages and currents, which remain"},
      {"jump", 0, -360, 360, "degrees of their phase jump"}},
     applyStep},
    {FamilyKind::Frequency,
     {{"from", 50, 10, 400, "Hz at the beginning"},
      {"to", 51, 10, 400, "Hz at the end"},
      {"rate", 0, 0, 1000, "Hz/s of the ramp; 0 is a step"},
      {"hold", 1, 0.1, 3600, "s before and after it"}},
     applyRamp},
    {FamilyKind::Modulation,
     {kFrequency,
      kSeconds,
      {"hertz", 1, 0.001, 1000, "Hz of the modulation"},
      {"percent", 0, -100, 100, "% of voltages and currents, up and down"},
      {"radians", 0, -kMaxPhaseDepth, kMaxPhaseDepth, "radians of their phase, ahead and behind"},
      {"current-percent", kAsVoltages, -100, 100, "% of the currents, where they differ"},
      {"current-radians", kAsVoltages, -kMaxPhaseDepth, kMaxPhaseDepth,
       "radians of the currents, where they differ"}},
     applyModulation},
    {FamilyKind::Flicker,
     {kFrequency,
      kSeconds,
      {"changes", 110, 0.1, 10000, "changes of the voltage per minute, alternately up and down"},
      {"percent", 1, 0, 100, "% of each change"}},
     applyFlicker},
    {FamilyKind::Harmonics, harmonicParameters(), applyHarmonics},
    {FamilyKind::Interharmonic,
     {kFrequency,
      kSeconds,
      kPhases,
      {"hertz", 75, 0.1, 20000, "Hz"},
      {"percent", 5, 0, 100, "% of the voltage"}},
     applyInterharmonic},
    {FamilyKind::Unbalance,
     {kFrequency,
      kShortSeconds,
      {"negative", 2, 0, 100, "% of negative sequence"},
      {"zero", 0, 0, 100, "% of zero sequence"}},
     applyUnbalance},
    {FamilyKind::Offset,
     {kFrequency,
      kSeconds,
      kPhases,
      kLead,
      kAngle,
      {"percent", 100, 0, 1000, "% of the current's peak, at the beginning"},
      {"tau", 0.05, 0.0001, 1000, "s, time constant of the decay"}},
     applyOffset},
    {FamilyKind::Transient,
     {kFrequency,
      kSeconds,
      kPhases,
      kLead,
      kAngle,
      {"hertz", 900, 1, 20000, "Hz of the oscillation"},
      {"percent", 50, 0, 1000, "% of the voltage's peak, at the beginning"},
      {"tau", 0.005, 0.0001, 1000, "s, time constant of the decay"}},
     applyTransient},
};
} // namespace

bool FamilyParameter::accepts(double value) const
{
    return value >= mMin && value <= mMax && (!mIsWhole || value == std::floor(value));
}

const FamilyParameter* SignalFamily::find(std::string_view parameter) const
{
    const auto found =
        std::find_if(mParameters.begin(), mParameters.end(),
                     [parameter](const auto& candidate) { return candidate.mName == parameter; });
    return found == mParameters.end() ? nullptr : &*found;
}

const SignalFamily& familyOf(FamilyKind kind)
{
    return *std::find_if(kFamilies.begin(), kFamilies.end(),
                         [kind](const SignalFamily& family) { return family.mKind == kind; });
}

} // namespace generate
