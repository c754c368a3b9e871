#include "WaveOptions.h"

#include <cmath>
#include <functional>

namespace {
constexpr char kHelpText[] =
    R"(Usage: vx-wave [OPTION]...
Writes an input value file: one line per degree of phase, 360 lines a period.

  --frequency HZ        signal frequency (default 50)
  --duration SECONDS    rounded to whole periods of the signal (default 1)
  --amplitudes A0,...,A7
                        peak values of the channels (default 230 V and 5 A rms)
  --phases P0,...,P7    degrees at the start (default 0,-120,120,0,-30,-150,90,0)
  --harmonic ORDER:RATIO:DEGREES:CHANNELS
                        adds a harmonic, relative to the fundamental; repeatable
  --disturbance START:SECONDS:FACTOR:DEGREES:CHANNELS
                        scales and shifts channels for some time; repeatable
  -o FILE               writes to FILE instead of standard output
  -h, --help            shows this text

Channels 0 to 2 are the phase voltages and 3 the neutral voltage in mV, 4 to 6
the phase currents and 7 the neutral current in mA.

Example, a second in which the first voltage sags to 40 % with a phase jump:
  vx-wave --duration 1 --disturbance 0.3:0.4:0.4:-30:0 -o sag.csv
)";

bool readNumber(const QString& text, double& number)
{
    bool isNumber = false;
    number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number);
}

bool readFrequency(const QString& text, float& frequency)
{
    bool isNumber = false;
    frequency = text.toFloat(&isNumber);
    return isNumber && std::isfinite(frequency);
}

/** Reads a number per channel, comma-separated, into the given member of the channels. */
bool readChannels(const QString& text, double WaveChannel::*member, WaveParameters& parameters)
{
    const QStringList fields = text.split(',');
    if (fields.size() != kChannelCount) {
        return false;
    }
    for (int channel = 0; channel < kChannelCount; ++channel) {
        if (!readNumber(fields[channel], parameters.mChannels[std::size_t(channel)].*member)) {
            return false;
        }
    }
    return true;
}

/** Reads channel numbers, comma-separated. */
bool readChannelSet(const QString& text, ChannelSet& channels)
{
    channels.reset();
    for (const QString& field : text.split(',')) {
        bool isNumber = false;
        const uint channel = field.toUInt(&isNumber);
        if (!isNumber || channel >= uint(kChannelCount)) {
            return false;
        }
        channels.set(channel);
    }
    return true;
}

bool readHarmonic(const QString& text, WaveParameters& parameters)
{
    const QStringList fields = text.split(':');
    if (fields.size() != 4) {
        return false;
    }
    Harmonic harmonic{};
    bool isOrder = false;
    harmonic.mOrder = fields[0].toInt(&isOrder);
    const bool isGood = isOrder && readNumber(fields[1], harmonic.mRatio) &&
                        readNumber(fields[2], harmonic.mPhase) &&
                        readChannelSet(fields[3], harmonic.mChannels);
    parameters.mHarmonics.push_back(harmonic);
    return isGood;
}

bool readDisturbance(const QString& text, WaveParameters& parameters)
{
    const QStringList fields = text.split(':');
    if (fields.size() != 5) {
        return false;
    }
    Disturbance disturbance{};
    const bool isGood = readNumber(fields[0], disturbance.mStart) &&
                        readNumber(fields[1], disturbance.mDuration) &&
                        readNumber(fields[2], disturbance.mFactor) &&
                        readNumber(fields[3], disturbance.mPhaseJump) &&
                        readChannelSet(fields[4], disturbance.mChannels);
    parameters.mDisturbances.push_back(disturbance);
    return isGood;
}
} // namespace

WaveOptions::WaveOptions()
    : mHelp(QStringList{"h", "help"}),
      mFrequency("frequency", {}, "HZ"),
      mDuration("duration", {}, "SECONDS"),
      mAmplitudes("amplitudes", {}, "A0,...,A7"),
      mPhases("phases", {}, "P0,...,P7"),
      mHarmonic("harmonic", {}, "ORDER:RATIO:DEGREES:CHANNELS"),
      mDisturbance("disturbance", {}, "START:SECONDS:FACTOR:DEGREES:CHANNELS"),
      mOutput("o", {}, "FILE")
{
    mParser.addOptions(
        {mHelp, mFrequency, mDuration, mAmplitudes, mPhases, mHarmonic, mDisturbance, mOutput});
}

QString WaveOptions::helpText()
{
    return kHelpText;
}

QString WaveOptions::read(const QStringList& arguments)
{
    if (!mParser.parse(arguments)) {
        return mParser.errorText();
    }
    if (isHelpRequested()) {
        return {};
    }
    if (!mParser.positionalArguments().isEmpty()) {
        return QString("'%1': expected options only").arg(mParser.positionalArguments().first());
    }
    const QString problem = readValues();
    return problem.isEmpty() ? problemOf(mParameters) : problem;
}

QString WaveOptions::readValues()
{
    struct Reader
    {
        QCommandLineOption mOption;
        std::function<bool(const QString&)> mRead;
        const char* mExample;
    };
    const Reader readers[] = {
        {mFrequency, [this](auto text) { return readFrequency(text, mParameters.mFrequency); },
         "49.95"},
        {mDuration, [this](auto text) { return readNumber(text, mParameters.mDuration); }, "0.5"},
        {mAmplitudes,
         [this](auto text) { return readChannels(text, &WaveChannel::mAmplitude, mParameters); },
         "325269,325269,325269,0,7071,7071,7071,0"},
        {mPhases,
         [this](auto text) { return readChannels(text, &WaveChannel::mPhase, mParameters); },
         "0,-120,120,0,-30,-150,90,0"},
        {mHarmonic, [this](auto text) { return readHarmonic(text, mParameters); },
         "5:0.06:0:0,1,2"},
        {mDisturbance, [this](auto text) { return readDisturbance(text, mParameters); },
         "0.3:0.4:0.4:-30:0"},
    };
    for (const Reader& reader : readers) {
        for (const QString& text : mParser.values(reader.mOption)) {
            if (!reader.mRead(text)) {
                return QString("--%1 '%2': expected %3, for example %4")
                    .arg(reader.mOption.names().first(), text, reader.mOption.valueName(),
                         reader.mExample);
            }
        }
    }
    return {};
}
