#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>

#include "base/Numbers.h"
#include "base/StandardOutput.h"
#include "base/Text.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "generate/SignalTable.h"
#include "generate/TruthFile.h"
#include "generate/Wave.h"
#include "generate/WaveFile.h"
#include "states/StateFile.h"
#include "states/StateOutputs.h"

namespace commands {

namespace {
constexpr char kGenerateFooter[] =
    R"(Channels 0 to 2 are the phase voltages and 3 the neutral voltage in mV, 4 to 6
the phase currents and 7 the neutral current in mA.

Examples: one second with a sag of the first voltage to 40 % and a phase jump, and
a signal of the catalogue in a single phase:
  vx-case generate --duration 1 --disturbance 0.3:0.4:0.4:-30:0 -o sag.csv
  vx-case generate --signal dip-70-25-50hz --set phases=1 -o dip.csv

Example: the states of a file, such as pre-fault, fault and post-fault:
  vx-case generate --states event.toml --truth event.json -o states.csv)";

/** Reads a number per channel, comma-separated, into the given member of the channels. */
bool readChannels(const std::string& text, double generate::WaveChannel::*member,
                  generate::WaveParameters& parameters)
{
    const auto fields = base::splitText(text, ',');
    if (fields.size() != parameters.mChannels.size()) {
        return false;
    }
    for (size_t channel = 0; channel < fields.size(); ++channel) {
        if (!base::parseNumber(fields[channel], &(parameters.mChannels[channel].*member))) {
            return false;
        }
    }
    return true;
}

/** Reads channel numbers, comma-separated. */
bool readChannelSet(std::string_view text, generate::ChannelSet& channels)
{
    channels.reset();
    for (const std::string_view field : base::splitText(text, ',')) {
        size_t channel = 0;
        if (!base::parseNumber(field, &channel) || channel >= channels.size()) {
            return false;
        }
        channels.set(channel);
    }
    return true;
}

bool readHarmonic(const std::string& text, generate::WaveParameters& parameters)
{
    const auto fields = base::splitText(text, ':');
    generate::Harmonic harmonic{};
    const bool isGood = fields.size() == 4 && base::parseNumber(fields[0], &harmonic.mOrder) &&
                        base::parseNumber(fields[1], &harmonic.mRatio) &&
                        base::parseNumber(fields[2], &harmonic.mPhase) &&
                        readChannelSet(fields[3], harmonic.mChannels);
    parameters.mHarmonics.push_back(harmonic);
    return isGood;
}

bool readDisturbance(const std::string& text, generate::WaveParameters& parameters)
{
    const auto fields = base::splitText(text, ':');
    generate::Disturbance disturbance{};
    const bool isGood = fields.size() == 5 && base::parseNumber(fields[0], &disturbance.mStart) &&
                        base::parseNumber(fields[1], &disturbance.mDuration) &&
                        base::parseNumber(fields[2], &disturbance.mFactor) &&
                        base::parseNumber(fields[3], &disturbance.mPhaseJump) &&
                        readChannelSet(fields[4], disturbance.mChannels);
    parameters.mDisturbances.push_back(disturbance);
    return isGood;
}

/** Reads the rule of the neutral current and, where there is one, of the neutral voltage. */
bool readNeutral(const std::string& text, generate::WaveParameters& parameters)
{
    const auto fields = base::splitText(text, ',');
    const auto current = generate::neutralRuleNamed(fields.front());
    const auto voltage = generate::neutralRuleNamed(fields.back());
    if (fields.size() != 2 || !current || !voltage) {
        return false;
    }
    parameters.mNeutral = {*current, *voltage};
    return true;
}

/** An option that sets parameters from its text; mRead is false if the text is invalid. */
struct Reader
{
    const char* mName;
    const char* mForm;
    const char* mExample;
    const char* mHelp;
    bool mIsRepeatable;
    bool (*mRead)(const std::string& text, generate::WaveParameters& parameters);
};

const Reader kReaders[] = {
    {"--frequency", "HZ", "49.95", "Signal frequency (default 50)", false,
     [](auto& text, auto& parameters) { return base::parseNumber(text, &parameters.mFrequency); }},
    {"--duration", "SECONDS", "0.5", "Rounded to whole periods of the signal (default 1)", false,
     [](auto& text, auto& parameters) { return base::parseNumber(text, &parameters.mDuration); }},
    {"--amplitudes", "A0,...,A7", "325269,325269,325269,0,7071,7071,7071,0",
     "Peak values of the channels (default 230 V and 5 A rms)", false,
     [](auto& text, auto& parameters) {
         return readChannels(text, &generate::WaveChannel::mAmplitude, parameters);
     }},
    {"--phases", "P0,...,P7", "0,-120,120,0,-30,-150,90,0",
     "Angles at the start in degrees (default 0,-120,120,0,-30,-150,90,0)", false,
     [](auto& text, auto& parameters) {
         return readChannels(text, &generate::WaveChannel::mPhase, parameters);
     }},
    {"--neutral", "CURRENT,VOLTAGE", "sum,zero",
     "Neutral channels: sum of the phases, zero, or given by --amplitudes (default: sum,zero for a "
     "signal and states, otherwise given)",
     false, readNeutral},
    {"--harmonic", "ORDER:RATIO:DEGREES:CHANNELS", "5:0.06:0:0,1,2",
     "Adds a harmonic, relative to the fundamental; repeatable", true, readHarmonic},
    {"--disturbance", "START:SECONDS:FACTOR:DEGREES:CHANNELS", "0.3:0.4:0.4:-30:0",
     "Scales and phase-shifts channels for some time; repeatable", true, readDisturbance},
};

/** The options of the command. */
struct GenerateOptions
{
    generate::WaveParameters mWave;
    bool mIsWaveChanged = false;      ///< by one of its options
    bool mIsNeutralDescribed = false; ///< by --neutral or --amplitudes
    std::string mSignal;              ///< empty for none
    std::vector<std::string> mSettings;
    bool mIsList = false;
    std::string mStates;     ///< a file; empty for none
    bool mIsAligned = false; ///< states have whole periods
    bool mIsStateList = false;
    std::string mTruth;  ///< empty for none
    std::string mOutput; ///< empty for standard output
};

/** Each occurrence of an option has one text. If it is not repeatable, the last one counts. */
void addReader(CLI::App& command, const Reader& reader, GenerateOptions& options)
{
    CLI::Option* const option = command.add_option_function<std::vector<std::string>>(
        reader.mName,
        [&reader, &options](const std::vector<std::string>& texts) {
            const std::string_view name = reader.mName;
            options.mIsWaveChanged = true;
            options.mIsNeutralDescribed |= name == "--neutral" || name == "--amplitudes";
            for (const std::string& text : texts) {
                if (!reader.mRead(text, options.mWave)) {
                    throw CLI::ValidationError(
                        reader.mName, fmt::format("'{}': expected {}, for example {}", text,
                                                  reader.mForm, reader.mExample));
                }
            }
        },
        reader.mHelp);
    option->type_name(reader.mForm);
    takeOneValueEach(*option);
    if (!reader.mIsRepeatable) {
        option->expected(1)->take_last();
    }
}

void list()
{
    std::string text;
    for (const generate::Signal& signal : generate::signalTable()) {
        text += fmt::format("{:<28} {}\n", signal.mName, signal.mText);
    }
    base::writeToStandardOutput(text);
}

/** Changes one parameter of the signal, by a text such as "percent=40". */
void set(const std::string& text, generate::Signal& signal)
{
    const generate::SignalFamily& family = generate::familyOf(signal.mFamily);
    const auto fields = base::splitText(text, '=');
    const generate::FamilyParameter* const parameter = family.find(fields[0]);
    if (parameter == nullptr) {
        std::vector<std::string> names;
        for (const generate::FamilyParameter& candidate : family.mParameters) {
            names.push_back(candidate.mName);
        }
        throw CLI::ValidationError(
            "--set", fmt::format("'{}': expected PARAMETER=NUMBER; {} has the parameters {}", text,
                                 signal.mName, fmt::join(names, ", ")));
    }
    double value = 0.0;
    if (fields.size() != 2 || !base::parseNumber(fields[1], &value) || !parameter->accepts(value)) {
        throw CLI::ValidationError(
            "--set",
            fmt::format("'{}': expected {}=NUMBER, {:g} to {:g} ({})", text, parameter->mName,
                        parameter->mMin, parameter->mMax, parameter->mMeaning));
    }
    signal.mSettings[parameter->mName] = value;
}

generate::Signal signalOf(const GenerateOptions& options)
{
    const generate::Signal* const row = generate::findSignal(options.mSignal);
    if (row == nullptr) {
        throw CLI::ValidationError("--signal", generate::unknownSignal(options.mSignal));
    }
    generate::Signal signal = *row;
    for (const std::string& text : options.mSettings) {
        set(text, signal);
    }
    if (options.mIsWaveChanged || !options.mSettings.empty()) {
        // Both apply to the unchanged row only.
        signal.mText.clear();
        signal.mPst = 0.0;
    }
    return signal;
}

/** The output files, which all kinds of description have in common. */
class Outputs
{
public:
    explicit Outputs(const GenerateOptions& options)
    {
        CommandFiles files;
        if (!options.mStates.empty()) {
            files.addInput("--states", options.mStates);
        }
        files.addOutput("-o", options.mOutput);
        files.addOutput("--truth", options.mTruth);
        files.expectNoConflict();
        mValues.emplace(options.mOutput);
        if (!options.mTruth.empty()) {
            mTruth.emplace(options.mTruth);
        }
    }

    base::ResultFile& values() { return *mValues; }

    /** Null if no truth was requested. */
    base::ResultFile* truth() { return mTruth ? &*mTruth : nullptr; }

    void commit()
    {
        mValues->commit();
        if (mTruth) {
            mTruth->commit();
        }
    }

private:
    std::optional<base::ResultFile> mValues;
    std::optional<base::ResultFile> mTruth;
};

void printRemarks(const std::vector<std::string>& remarks)
{
    for (const std::string& remark : remarks) {
        fmt::print(stderr, "remark: {}\n", remark);
    }
}

void generateStates(const GenerateOptions& options, const std::string& commandLine)
{
    states::StatePlan plan = states::readStates(options.mStates);
    if (options.mIsNeutralDescribed) {
        plan.mNeutral = options.mWave.mNeutral;
    }
    const states::StateLayout layout(plan, options.mIsAligned);
    printRemarks(layout.remarks());
    if (options.mIsStateList) {
        fmt::print("{}", states::tableOf(plan, layout));
        return;
    }
    Outputs outputs(options);
    states::StateSignal signal(plan, layout);
    generate::SampleMeter meter = states::sampleMeterFor(plan);
    generate::writeLines(signal, {"made by " + commandLine}, outputs.values(),
                         outputs.truth() != nullptr ? &meter : nullptr);
    if (outputs.truth() != nullptr) {
        states::writeTruth(plan, layout, signal, meter.values(layout.timeline()), *outputs.truth());
    }
    outputs.commit();
}

void generateWave(const GenerateOptions& options, const std::string& commandLine)
{
    generate::WaveParameters parameters = options.mWave;
    generate::Signal signal;
    if (!options.mSignal.empty()) {
        signal = signalOf(options);
        if (!options.mIsNeutralDescribed) {
            parameters.mNeutral = generate::kCatalogueNeutral;
        }
        signal.applyTo(parameters);
    }
    const std::string problem = generate::problemOf(parameters);
    if (!problem.empty()) {
        throw CLI::ValidationError(problem);
    }
    printRemarks(generate::seamsOf(parameters));
    Outputs outputs(options);
    const generate::ReferenceValues reference = generate::referenceValuesOf(parameters);
    generate::SampleMeter meter = generate::sampleMeterFor(reference);
    generate::Wave wave(parameters);
    generate::writeLines(wave, {"made by " + commandLine}, outputs.values(),
                         outputs.truth() != nullptr ? &meter : nullptr);
    if (outputs.truth() != nullptr) {
        generate::writeTruth(signal, reference, meter.values(wave.timeline()), *outputs.truth());
    }
    outputs.commit();
}

/** These options are refused together with a file of states, which describes the wave. */
void addStateOptions(CLI::App& command, GenerateOptions& options)
{
    CLI::Option* const states =
        command.add_option("--states", options.mStates, "Generates the states of a TOML file")
            ->type_name("FILE");
    command.add_flag("--align", options.mIsAligned, "Rounds the states to whole periods")
        ->needs(states);
    command.add_flag("--list-states", options.mIsStateList, "Only lists the states")->needs(states);
    for (const char* other : {"--signal", "--frequency", "--duration", "--amplitudes", "--phases",
                              "--harmonic", "--disturbance"}) {
        states->excludes(command.get_option(other));
    }
}

void addSignalOptions(CLI::App& command, GenerateOptions& options)
{
    command.add_option("--signal", options.mSignal, "Generates a signal of --list")
        ->type_name("NAME");
    CLI::Option& settings = *command.add_option("--set", options.mSettings,
                                                "Changes a parameter of the signal; repeatable");
    settings.type_name("PARAMETER=NUMBER")->needs("--signal");
    takeOneValueEach(settings);
    command.add_flag("--list", options.mIsList, "Only lists the signals");
    command.add_option("--truth", options.mTruth, "Writes the true values of the signal, as JSON")
        ->type_name("FILE");
    addOutputOption(command, options.mOutput);
}
} // namespace

void addGenerateCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand(
        "generate", "Writes a value file: one line per degree of phase, 360 lines per period");
    command.footer(kGenerateFooter);
    const auto options = std::make_shared<GenerateOptions>();
    for (const Reader& reader : kReaders) {
        addReader(command, reader, *options);
    }
    addSignalOptions(command, *options);
    command.get_option("--signal")
        ->excludes(command.get_option("--frequency"))
        ->excludes(command.get_option("--duration"));
    addStateOptions(command, *options);
    command.callback([options, &command] {
        if (options->mIsList) {
            list();
        } else if (!options->mStates.empty()) {
            generateStates(*options, commandLineOf(command));
        } else {
            generateWave(*options, commandLineOf(command));
        }
    });
}

} // namespace commands
