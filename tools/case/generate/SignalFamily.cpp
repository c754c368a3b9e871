#include "generate/SignalFamily.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace generate {

namespace {
constexpr double kPercent = 100.0;
constexpr double kDegreesPerPeriod = 360.0;

const FamilyParameter kFrequency{"frequency", 50, 10, 400, "Hz"};
const FamilyParameter kSeconds{"seconds", 1, 0.1, 86400, "s, of the file"};
const FamilyParameter kPhases{"phases", 3, 1, 3, "how many, from the first on; a whole number",
                              true};
const FamilyParameter kLead{"lead", 10, 0, 10000, "undisturbed periods in front"};
const FamilyParameter kTail{"tail", 15, 0, 10000, "undisturbed periods behind"};
const FamilyParameter kAngle{"angle", 0, 0, 360, "degrees of the first phase where it begins"};

const ChannelSet kVoltages(0b0000'0111);
const ChannelSet kCurrents(0b0111'0000);

double of(const Settings& settings, std::string_view name)
{
    return settings.find(name)->second;
}

/** The first phases of voltages or currents. */
ChannelSet phasesOf(const Settings& settings, ChannelSet all)
{
    const auto absent = size_t(std::lround(3.0 - of(settings, "phases")));
    return all & (all >> absent);
}

void applySteady(const Settings& settings, WaveParameters& wave)
{
    wave.mFrequency = float(of(settings, "frequency"));
    wave.mDuration = of(settings, "seconds");
}

/** Where something begins, in periods. */
double beginOf(const Settings& settings, const WaveParameters& wave)
{
    const double degrees =
        std::fmod(of(settings, "angle") - wave.mChannels[0].degrees(), kDegreesPerPeriod);
    return of(settings, "lead") + degrees / kDegreesPerPeriod + (degrees < 0.0 ? 1.0 : 0.0);
}

void applyEvent(const Settings& settings, WaveParameters& wave)
{
    const double hertz = of(settings, "frequency");
    const double begin = beginOf(settings, wave);
    const double periods = of(settings, "periods");
    wave.mFrequency = float(hertz);
    wave.mDuration = (std::ceil(begin + periods) + of(settings, "tail")) / hertz;
    wave.mDisturbances.push_back({begin / hertz, periods / hertz,
                                  of(settings, "percent") / kPercent, of(settings, "jump"),
                                  phasesOf(settings, kVoltages)});
}

/** The second half of the file, which is whole periods, differs from the first. */
void applyStep(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    const auto hertz = double(wave.mFrequency);
    const double half = std::round(wave.mDuration * hertz) / hertz / 2.0;
    wave.mDisturbances.push_back({half, half, of(settings, "percent") / kPercent,
                                  of(settings, "jump"), kVoltages | kCurrents});
}

void applyRamp(const Settings& settings, WaveParameters& wave)
{
    const double from = of(settings, "from");
    const double to = of(settings, "to");
    const double rate = of(settings, "rate");
    const double hold = of(settings, "hold");
    const double change = rate > 0.0 ? std::abs(to - from) / rate : 0.0;
    wave.mFrequency = float(from);
    wave.mDuration = 2.0 * hold + change;
    wave.mCourse = {{hold, from}, {hold + change, to}};
}

void applyModulation(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    wave.mModulations.push_back({of(settings, "hertz"), of(settings, "percent") / kPercent,
                                 of(settings, "radians"), ModulationShape::Sine,
                                 kVoltages | kCurrents});
}

/** A change of so many percent is half of them up and half of them down. */
void applyFlicker(const Settings& settings, WaveParameters& wave)
{
    constexpr double kChangesPerCycle = 2.0;
    constexpr double kSecondsPerMinute = 60.0;
    applySteady(settings, wave);
    wave.mModulations.push_back({of(settings, "changes") / kSecondsPerMinute / kChangesPerCycle,
                                 of(settings, "percent") / kPercent / 2.0, 0.0,
                                 ModulationShape::Rectangle, kVoltages});
}

void applyHarmonics(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    for (int order = 2; order <= kHighestNamedOrder; ++order) {
        const double percent = of(settings, "h" + std::to_string(order));
        if (percent > 0.0) {
            wave.mHarmonics.push_back(
                {order, percent / kPercent, 0.0, phasesOf(settings, kVoltages)});
        }
    }
}

void applyInterharmonic(const Settings& settings, WaveParameters& wave)
{
    applySteady(settings, wave);
    wave.mTones.push_back({0.0, of(settings, "hertz"), of(settings, "percent") / kPercent, 0.0,
                           kLasting, phasesOf(settings, kVoltages)});
}

/** The three sequences are in phase in the first voltage. */
void applyUnbalance(const Settings& settings, WaveParameters& wave)
{
    constexpr double kThird = 120.0;
    constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;
    applySteady(settings, wave);
    const WaveChannel first = wave.mChannels[0];
    for (size_t i = 0; i < 3; ++i) {
        const double turn = double(i) * kThird / kDegreesPerRadian;
        const std::complex<double> sum = std::polar(1.0, -turn) +
                                         std::polar(of(settings, "negative") / kPercent, turn) +
                                         of(settings, "zero") / kPercent;
        wave.mChannels[i] = {first.mAmplitude * std::abs(sum),
                             first.mPhase + std::arg(sum) * kDegreesPerRadian};
    }
}

void addDecay(const Settings& settings, double hertz, double phase, ChannelSet channels,
              WaveParameters& wave)
{
    applySteady(settings, wave);
    // From a line on, so that the first sample has the phase.
    const double begin = std::round(beginOf(settings, wave) * kSamplesPerPeriod);
    wave.mTones.push_back({begin / wave.samplesPerSecond(), hertz,
                           of(settings, "percent") / kPercent, phase, of(settings, "tau"),
                           phasesOf(settings, channels)});
}

void applyOffset(const Settings& settings, WaveParameters& wave)
{
    constexpr double kCosine = 90.0;
    addDecay(settings, 0.0, kCosine, kCurrents, wave);
}

void applyTransient(const Settings& settings, WaveParameters& wave)
{
    addDecay(settings, of(settings, "hertz"), 0.0, kVoltages, wave);
}

std::vector<FamilyParameter> harmonicParameters()
{
    std::vector<FamilyParameter> parameters{kFrequency, kSeconds, kPhases};
    for (int order = 2; order <= kHighestNamedOrder; ++order) {
        parameters.push_back({"h" + std::to_string(order), 0, 0, 100, "% of that order"});
    }
    return parameters;
}
} // namespace

bool FamilyParameter::accepts(double value) const
{
    return value >= mLeast && value <= mMost && (!mIsWhole || value == std::floor(value));
}

const FamilyParameter* SignalFamily::find(std::string_view parameter) const
{
    const auto found =
        std::find_if(mParameters.begin(), mParameters.end(),
                     [parameter](const auto& candidate) { return candidate.mName == parameter; });
    return found == mParameters.end() ? nullptr : &*found;
}

const std::vector<SignalFamily>& signalFamilies()
{
    static const std::vector<SignalFamily> kFamilies{
        {"steady", {kFrequency, kSeconds}, applySteady},
        {"event",
         {kFrequency,
          {"percent", 70, 0, 1000, "% of the voltage that remain"},
          {"periods", 10, 0.01, 100000, "how long it lasts"},
          {"jump", 0, -360, 360, "degrees that the phase jumps meanwhile"},
          kPhases,
          kAngle,
          kLead,
          kTail},
         applyEvent},
        {"step",
         {kFrequency,
          kSeconds,
          {"percent", 100, 0, 1000, "% that remain of voltages and currents"},
          {"jump", 0, -360, 360, "degrees that their phase jumps"}},
         applyStep},
        {"frequency",
         {{"from", 50, 10, 400, "Hz at first"},
          {"to", 51, 10, 400, "Hz at last"},
          {"rate", 0, 0, 1000, "Hz/s on the way; 0 is at once"},
          {"hold", 1, 0.1, 3600, "s before and after it"}},
         applyRamp},
        {"modulation",
         {kFrequency,
          kSeconds,
          {"hertz", 1, 0.001, 1000, "Hz of the modulation"},
          {"percent", 0, 0, 100, "% of voltages and currents, up and down"},
          {"radians", 0, 0, 1, "radians of their phase, to and fro"}},
         applyModulation},
        {"flicker",
         {kFrequency,
          kSeconds,
          {"changes", 110, 0.1, 10000, "a minute, of the voltage, up and down in turns"},
          {"percent", 1, 0, 100, "% of each change"}},
         applyFlicker},
        {"harmonics", harmonicParameters(), applyHarmonics},
        {"interharmonic",
         {kFrequency,
          kSeconds,
          kPhases,
          {"hertz", 75, 0.1, 20000, "Hz"},
          {"percent", 5, 0, 100, "% of the voltage"}},
         applyInterharmonic},
        {"unbalance",
         {kFrequency,
          kSeconds,
          {"negative", 2, 0, 100, "% of negative sequence"},
          {"zero", 0, 0, 100, "% of zero sequence"}},
         applyUnbalance},
        {"offset",
         {kFrequency,
          kSeconds,
          kPhases,
          kLead,
          kAngle,
          {"percent", 100, 0, 1000, "% of the current's peak, at the beginning"},
          {"tau", 0.05, 0.0001, 1000, "s until 37 % are left"}},
         applyOffset},
        {"transient",
         {kFrequency,
          kSeconds,
          kPhases,
          kLead,
          kAngle,
          {"hertz", 900, 1, 20000, "Hz of the oscillation"},
          {"percent", 50, 0, 1000, "% of the voltage's peak, at the beginning"},
          {"tau", 0.005, 0.0001, 1000, "s until 37 % are left"}},
         applyTransient},
    };
    return kFamilies;
}

const SignalFamily& familyNamed(std::string_view name)
{
    return *std::find_if(signalFamilies().begin(), signalFamilies().end(),
                         [name](const SignalFamily& family) { return family.mName == name; });
}

} // namespace generate
