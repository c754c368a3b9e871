#include "Wave.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <cmath>

#include "CommandRunner.h"

namespace {
const double kPi = std::acos(-1.0);

/** From the definition, over time instead of degrees. */
double expectedValue(const WaveParameters& parameters, double seconds, std::size_t channel)
{
    double amplitude = parameters.mChannels[channel].mAmplitude;
    double phase = 2 * kPi * double(parameters.mFrequency) * seconds +
                   parameters.mChannels[channel].mPhase * kPi / 180;
    for (const Disturbance& it : parameters.mDisturbances) {
        // Half a sample of tolerance: the borders have a test of their own.
        const double early = 0.5 / (360 * double(parameters.mFrequency));
        if (it.mChannels[channel] && seconds > it.mStart - early &&
            seconds < it.mStart + it.mDuration - early) {
            amplitude *= it.mFactor;
            phase += it.mPhaseJump * kPi / 180;
        }
    }
    double value = amplitude * std::sin(phase);
    for (const Harmonic& it : parameters.mHarmonics) {
        if (it.mChannels[channel]) {
            value += amplitude * it.mRatio * std::sin(it.mOrder * phase + it.mPhase * kPi / 180);
        }
    }
    return value;
}

/** The largest distance from what is expected over all samples and channels. */
double largestError(const WaveParameters& parameters)
{
    const Wave wave(parameters);
    double error = 0;
    for (qint64 sample = 0; sample < wave.sampleCount(); ++sample) {
        const double seconds = double(sample) / (360 * double(parameters.mFrequency));
        const Wave::Values values = wave.valuesOf(sample);
        for (std::size_t channel = 0; channel < values.size(); ++channel) {
            error = std::max(error, std::abs(expectedValue(parameters, seconds, channel) -
                                             double(values[channel])));
        }
    }
    return error;
}

/** What rounding to whole numbers may cost, and a little for the other way of computing. */
constexpr double kRounding = 0.501;
} // namespace

TEST(WaveTest, KnownValuesOfTheDefault)
{
    const Wave wave{WaveParameters()};
    EXPECT_EQ(wave.sampleCount(), 18'000);
    const Wave::Values first = wave.valuesOf(0);
    EXPECT_EQ((Wave::Values{first[0], first[1], first[2], first[3], first[6], first[7]}),
              (Wave::Values{0, -281'691, 281'691, 0, 7071, 0}));
    EXPECT_EQ(wave.valuesOf(90)[0], 325'269);
    EXPECT_EQ(wave.valuesOf(270)[0], -325'269);
    EXPECT_EQ(wave.valuesOf(360), wave.valuesOf(0));
    EXPECT_DOUBLE_EQ(wave.timeOf(9'000), 0.5);
}

TEST(WaveTest, ValuesFollowTheDefinition)
{
    WaveParameters parameters;
    EXPECT_LE(largestError(parameters), kRounding);

    parameters.mFrequency = 60;
    parameters.mDuration = 0.2;
    parameters.mHarmonics = {{3, 0.2, 90, 0x0f}, {179, 0.01, -45, 0x81}};
    parameters.mDisturbances = {{0.05, 0.1, 0.4, -30, 0x03}, {0.1, 0.1, 1.5, 200, 0x11}};
    ASSERT_EQ(problemOf(parameters), "");
    EXPECT_LE(largestError(parameters), kRounding);
}

TEST(WaveTest, SamplesAreThoseOfWholePeriods)
{
    struct Case
    {
        float mFrequency;
        double mDuration;
        qint64 mPeriods;
    };
    for (const Case& it :
         {Case{50, 1, 50}, Case{60, 0.5, 30}, Case{49.95F, 1, 50}, Case{50, 0.02, 1},
          Case{50, 0.029, 1}, Case{50, 0.031, 2}, Case{0.5F, 2, 1}, Case{400, 0.01, 4}}) {
        WaveParameters parameters;
        parameters.mFrequency = it.mFrequency;
        parameters.mDuration = it.mDuration;
        EXPECT_EQ(Wave(parameters).sampleCount(), 360 * it.mPeriods) << it.mFrequency << " Hz";
    }
}

TEST(WaveTest, DisturbanceBeginsAndEndsAtItsSamples)
{
    WaveParameters parameters;
    for (WaveChannel& channel : parameters.mChannels) {
        channel = {1000, 45.5};
    }
    parameters.mDisturbances = {{0.3, 0.4, 0, 0, 0x05}};
    const Wave wave(parameters);
    for (qint64 sample = 0; sample < wave.sampleCount(); ++sample) {
        const Wave::Values values = wave.valuesOf(sample);
        const bool isDisturbed = sample >= 5'400 && sample < 12'600;
        ASSERT_EQ(values[0] == 0, isDisturbed) << sample;
        ASSERT_EQ(values[0], values[2]) << sample;
        ASSERT_NE(values[1], 0) << sample;
    }
}

/** Runs the program as it is. */
class WaveProgramTest : public testing::Test
{
protected:
    CommandResult wave(const std::string& arguments) const
    {
        return mRunner.run(split(VX_WAVE + (" " + arguments)));
    }

    CommandRunner mRunner;
};

TEST_F(WaveProgramTest, FileHoldsTheWave)
{
    const std::string options = "--frequency 49.95 --duration 0.04 --phases 1,2,3,4,5,6,7,8";
    const CommandResult result = wave(options);
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    const Words lines = split(result.mOutput, '\n');
    ASSERT_EQ(lines.size(), 2U + 720U);
    EXPECT_EQ(lines[0], "# made by vx-wave " + options);
    EXPECT_EQ(lines[1].front(), '#');

    WaveParameters parameters;
    parameters.mFrequency = 49.95F;
    parameters.mDuration = 0.04;
    for (std::size_t channel = 0; channel < kChannelCount; ++channel) {
        parameters.mChannels[channel].mPhase = double(channel + 1);
    }
    const Wave expected(parameters);
    for (int sample = 0; sample < 720; ++sample) {
        const QStringList fields =
            QString::fromStdString(lines[std::size_t(sample) + 2]).split(';');
        ASSERT_EQ(fields.size(), 13);
        EXPECT_EQ(fields[0].toInt(), sample);
        EXPECT_NEAR(fields[1].toDouble(), sample / (360 * 49.95), 1e-8);
        EXPECT_EQ(fields[2].toInt(), sample);
        EXPECT_EQ(fields[3], "0");
        EXPECT_EQ(fields[4], "49.95");
        for (int channel = 0; channel < kChannelCount; ++channel) {
            EXPECT_EQ(fields[5 + channel].toInt(), expected.valuesOf(sample)[std::size_t(channel)]);
        }
    }
}

TEST_F(WaveProgramTest, OutputOptionWritesTheSameIntoAFile)
{
    const CommandResult printed = wave("--duration 0.02");
    const CommandResult written = wave("--duration 0.02 -o wave.csv");
    EXPECT_EQ(written.mExitCode, 0) << written;
    EXPECT_EQ(written.mOutput, "");
    const std::string file = mRunner.readFile("wave.csv");
    EXPECT_EQ(file.substr(file.find('\n')), printed.mOutput.substr(printed.mOutput.find('\n')));
}

TEST_F(WaveProgramTest, HelpIsOnStandardOutput)
{
    const CommandResult result = wave("--help");
    EXPECT_EQ(result.mExitCode, 0);
    EXPECT_EQ(result.mErrors, "");
    EXPECT_EQ(result.mOutput.find("Usage: vx-wave"), 0U) << result;
}

TEST_F(WaveProgramTest, BadOptions)
{
    struct Case
    {
        const char* mArguments;
        const char* mProblem;
    };
    const Case cases[] = {
        {"--nonsense", "Unknown option 'nonsense'."},
        {"--frequency", "Missing value after '--frequency'."},
        {"extra", "'extra': expected options only"},
        {"--frequency 49,95", "--frequency '49,95': expected HZ, for example 49.95"},
        {"--frequency 0",
         "frequency 0 Hz: expected more than 1/360 Hz and at most 2777777 Hz, so that a 360th of a "
         "period is at least 1 ns and less than 1 s"},
        {"--duration 0.0099", "duration 0.0099 s: expected at least one period of 0.02 s"},
        {"--duration inf", "--duration 'inf': expected SECONDS, for example 0.5"},
        {"--duration 1000000",
         "duration 1e+06 s: this is 18000000000 samples, expected at most 2147483647"},
        {"--phases 0,0,0,0,0,0,0",
         "--phases '0,0,0,0,0,0,0': expected P0,...,P7, for example 0,-120,120,0,-30,-150,90,0"},
        {"--amplitudes 1,1,1,1,1,1,1,2147483648",
         "channel 7 can reach 2.14748e+09: expected at most 2147483647, values have 32 bits"},
        {"--harmonic 5:0.1:0",
         "--harmonic '5:0.1:0': expected ORDER:RATIO:DEGREES:CHANNELS, for example 5:0.06:0:0,1,2"},
        {"--harmonic 1:0.1:0:0", "harmonic of order 1: expected an order from 2 to 179"},
        {"--disturbance 0:0.1:1:0:8",
         "--disturbance '0:0.1:1:0:8': expected START:SECONDS:FACTOR:DEGREES:CHANNELS, for example "
         "0.3:0.4:0.4:-30:0"},
        {"--disturbance 0.9:0.2:1:0:0",
         "disturbance from 0.9 s to 1.1 s: expected to lie between 0 s and the end of the wave at "
         "1 s"},
        {"-o no/such.csv", "no/such.csv: No such file or directory"},
        {"-o /dev/null", "/dev/null: expected a regular file or a new name"},
    };
    for (const Case& it : cases) {
        const CommandResult result = wave(it.mArguments);
        SCOPED_TRACE(it.mArguments);
        EXPECT_EQ(result.mExitCode, 1);
        EXPECT_EQ(result.mOutput, "");
        EXPECT_EQ(result.mErrors, std::string("vx-wave: ") + it.mProblem + "\n");
    }
}
