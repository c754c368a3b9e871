#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "CaseConfiguration.h"
#include "CommandRunner.h"
#include "generate/ReferenceValues.h"
#include "generate/SignalTable.h"
#include "generate/Wave.h"
#include "generate/WaveFile.h"
#include "waveform/ValueFileSource.h"

TEST(SignalTableTest, EveryRowIsPlayable)
{
    std::set<std::string> names;
    for (const generate::Signal& signal : generate::signalTable()) {
        EXPECT_TRUE(names.insert(signal.mName).second) << signal.mName;
        generate::WaveParameters parameters;
        parameters.mNeutral = generate::kCatalogueNeutral;
        signal.applyTo(parameters);
        EXPECT_EQ(generate::problemOf(parameters), "") << signal.mName;
        EXPECT_EQ(generate::seamsOf(parameters), std::vector<std::string>{}) << signal.mName;
    }
}

/** The angle is between two lines, and the oscillation is fast enough to show it. */
TEST(SignalTableTest, ToneBeginsOnALine)
{
    generate::Signal signal = *generate::findSignal("oscillating-transient");
    signal.mSettings = {{"angle", 90.4}, {"hertz", 2500}};
    generate::WaveParameters parameters;
    signal.applyTo(parameters);
    const generate::Wave wave(parameters);
    EXPECT_EQ(wave.timeline().lineAt(parameters.mTones[0].mStart), 3690);
    EXPECT_NEAR(wave.valuesOf(3690)[0], parameters.mChannels[0].mAmplitude, 1e-3);
}

/** Limits of size and time for a test bench. */
TEST(SignalTableTest, CatalogueStaysWithinItsLimits)
{
    constexpr qint64 kBytesOfLine = 85; // a longer one is not seen: nine digits and a sign at most
    int files = 0;
    qint64 lines = 0;
    for (const generate::Signal& signal : generate::signalTable()) {
        generate::WaveParameters parameters;
        signal.applyTo(parameters);
        if (signal.mIsInCatalogue) {
            EXPECT_LE(parameters.mDuration, 20.0) << signal.mName;
            lines += generate::Timeline(parameters).lineCount();
            ++files;
        }
    }
    EXPECT_LE(files, 60);
    EXPECT_LE(lines * kBytesOfLine, 220'000'000);
}

/** Computed by hand from the table's row. */
TEST(ReferenceValuesTest, MatchTheDescription)
{
    using Values = generate::ReferenceValues;
    struct Case
    {
        const char* mSignal;
        double (*mRead)(const Values& values);
        double mExpected;
    };
    constexpr double kLine = 55555e-9;
    const Case cases[] = {
        {"steady-60hz", [](auto& v) { return v.mFrequency.mHertz; }, 1e9 / (46296 * 360)},
        {"steady-60hz", [](auto& v) { return v.mChannels[4].mFundamentalDegrees; }, -30},
        {"dip-40-10-50hz-jump", [](auto& v) { return v.mDisturbances[0].mFactor; }, 0.4},
        {"dip-40-10-50hz-at90", [](auto& v) { return double(v.mDisturbances[0].mBegin.mLine); },
         3690},
        {"dip-40-10-50hz-at90", [](auto& v) { return v.mDisturbances[0].mEnd.mSeconds; },
         7290 * kLine},
        {"step-phase-down", [](auto& v) { return v.mDisturbances[0].mPhaseJumpDegrees; }, -10},
        {"step-phase-down", [](auto& v) { return v.mDisturbances[0].mEnd.mSeconds; },
         18000 * kLine},
        {"frequency-ramp-up-2hz", [](auto& v) { return *v.mFrequency.mMaxHertzPerSecond; }, 1},
        {"frequency-ramp-up-2hz", [](auto& v) { return v.mFrequency.mSteps[1].mPosition.mSeconds; },
         48 * 360 * 57870e-9},
        {"frequency-ramp-up-2hz", [](auto& v) { return v.mFrequency.mMaxHertz; },
         1e9 / (53418 * 360)},
        {"phase-modulation-5hz", [](auto& v) { return v.mFrequency.mMaxHertz; }, 50.5005},
        {"phase-modulation-5hz", [](auto& v) { return *v.mFrequency.mMaxHertzPerSecond; }, 15.708},
        {"flicker-4000", [](auto& v) { return v.mModulations[0].mHertz; }, 100.001 / 3},
        {"harmonics-mix", [](auto& v) { return *v.mChannels[2].mThdPercent; }, std::sqrt(115.5)},
        {"harmonics-mix", [](auto& v) { return *v.mChannels[2].mHarmonics[3].mPercent; }, 6},
        {"interharmonic-75hz", [](auto& v) { return v.mTones[0].mHertz; }, 75.00075},
        {"unbalance-negative", [](auto& v) { return v.mUnbalance->mNegativePercent; }, 2},
        {"unbalance-zero", [](auto& v) { return v.mUnbalance->mZeroPercent; }, 2},
        {"decaying-offset", [](auto& v) { return *v.mTones[0].mTimeConstantSeconds; }, 0.05},
        {"decaying-offset", [](auto& v) { return double(v.mTones[0].mBegin.mLine); }, 3600},
    };
    for (const Case& it : cases) {
        generate::WaveParameters parameters;
        generate::findSignal(it.mSignal)->applyTo(parameters);
        const double value = it.mRead(generate::referenceValuesOf(parameters));
        EXPECT_NEAR(value, it.mExpected, 2e-5 * std::abs(it.mExpected)) << it.mSignal;
    }
}

/** A dip of two phases, one inside the other in time; thresholds are crossed, not touched. */
TEST(SampleMeterTest, FindsEventsByTheStandard)
{
    generate::WaveParameters parameters;
    parameters.mDuration = 2.0;
    parameters.mChannels = {};
    for (const size_t channel : {0U, 1U, 2U}) {
        parameters.mChannels[channel] = {100'000.0, 0.0};
    }
    parameters.mDisturbances = {
        {0.1, 0.2, 0.5, 0, 0x1},  {0.1, 0.1, 0.5, 0, 0x1},  // together 25 %
        {0.2, 0.2, 0.6, 0, 0x2},                            // overlaps the first
        {0.5, 0.1, 0.9, 0, 0x7},  {0.6, 0.1, 1.1, 0, 0x7},  // at the thresholds
        {0.8, 0.1, 0.89, 0, 0x4}, {0.9, 0.1, 0.91, 0, 0x4}, // not back: the hysteresis
        {1.2, 0.1, 1.2, 0, 0x2},  {1.4, 0.1, 0.04, 0, 0x7}, {1.9, 0.1, 0.3, 0, 0x1},
    };
    ASSERT_EQ(generate::problemOf(parameters), "");
    generate::SampleMeter meter = generate::sampleMeterFor(generate::referenceValuesOf(parameters));
    const generate::Wave wave(parameters);
    for (qint64 line = 0; line < wave.timeline().lineCount(); ++line) {
        meter.add(line, generate::roundedValues(wave.valuesOf(line)));
    }
    const generate::MeasuredValues values = meter.values(wave.timeline());
    struct ExpectedEvent
    {
        generate::EventKind mKind;
        unsigned long mChannels;
        qint64 mBegin;
        qint64 mEnd; ///< -1 for none
        double mPercent;
    };
    using generate::EventKind;
    const auto expectEvents = [&values](const std::vector<generate::VoltageEvent>& events,
                                        const std::vector<ExpectedEvent>& expected) {
        ASSERT_EQ(events.size(), expected.size());
        for (size_t i = 0; i < events.size(); ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(events[i].mKind, expected[i].mKind);
            EXPECT_EQ(events[i].mChannels.to_ulong(), expected[i].mChannels);
            EXPECT_EQ(events[i].mSpan.mBegin.mLine, expected[i].mBegin);
            EXPECT_EQ(events[i].mSpan.mEnd ? events[i].mSpan.mEnd->mLine : -1, expected[i].mEnd);
            EXPECT_NEAR(events[i].mResidualRms / values.mDeclaredRms * 100.0, expected[i].mPercent,
                        0.01);
        }
    };
    // A period that is half in the event is beyond the threshold, too; the event includes the
    // period that is back.
    expectEvents(values.mEvents, {{EventKind::Dip, 0x3, 1620, 7560, 25.0},
                                  {EventKind::Dip, 0x4, 14400, 18180, 89.0},
                                  {EventKind::Swell, 0x2, 21420, 23760, 120.0},
                                  {EventKind::Interruption, 0x7, 25020, 27360, 4.0},
                                  {EventKind::Dip, 0x1, 34020, -1, 30.0}});
    expectEvents(values.mChannels[1].mEvents, {{EventKind::Dip, 0x2, 3420, 7560, 60.0},
                                               {EventKind::Swell, 0x2, 21420, 23760, 120.0},
                                               {EventKind::Dip, 0x2, 25020, 27360, 4.0}});
    ASSERT_EQ(values.mEvents[3].mInterruptions.size(), 1U);
    EXPECT_EQ(values.mEvents[3].mInterruptions[0].mBegin.mLine, 25200);
    EXPECT_EQ(values.mEvents[3].mInterruptions[0].mEnd->mLine, 27180);
}

/** Runs the program as its user does. */
class GenerateTest : public testing::Test
{
protected:
    CommandResult generate(const std::string& arguments) const
    {
        return mRunner.run(split(VX_CASE + (" generate " + arguments)));
    }

    CommandRunner mRunner;
};

TEST_F(GenerateTest, WritesTheWave)
{
    const std::string options =
        "--frequency 49.95 --duration 0.05 --duration 0.031 --phases -1,2,3,4,5,6,7,8";
    const CommandResult result = generate(options);
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    const Words lines = split(result.mOutput, '\n');
    ASSERT_EQ(lines.size(), 2U + 720U);
    EXPECT_EQ(lines[0], "# made by vx-case generate " + options);
    EXPECT_EQ(lines[1].front(), '#');
    EXPECT_EQ(lines[2], "0;0.000000000;0;0;49.95;-5677;11352;17023;0;616;739;862;0");
    EXPECT_EQ(lines[92 + 360],
              "450;0.025025025;450;0;49.95;325219;325071;324823;0;7044;7032;7018;0");

    const CommandResult written = generate(options + " -o wave.csv");
    EXPECT_EQ(written.mExitCode, 0) << written;
    EXPECT_EQ(written.mOutput, "");
    const std::string file = mRunner.readFile("wave.csv");
    EXPECT_EQ(file.substr(file.find('\n')), result.mOutput.substr(result.mOutput.find('\n')));
}

/** The JSON of a signal with changed parameters. */
TEST_F(GenerateTest, TruthHoldsForAChangedSignal)
{
    struct Case
    {
        const char* mArguments;
        const char* mPlace;
        nlohmann::json mValue; ///< null where there is none
    };
    const Case cases[] = {
        {"--signal dip-70-25-50hz --set percent=40", "/text", nullptr},
        {"--signal dip-70-25-50hz", "/text",
         "dip to 70 % for 25 periods (IEC 61000-4-11, classes 2 and 3)"},
        {"--signal flicker-1620 --amplitudes 1,1,1,1,1,1,1,1", "/pst", nullptr},
        {"--signal step-phase-up --set frequency=50.3", "/disturbances/0/begin/line", 9000},
        {"--amplitudes -9,1,1,1,1,1,1,1", "/channels/0/fundamentalDegrees", 180.0},
        {"--amplitudes -9,1,1,1,1,1,1,1 --harmonic 2:0.1:30:0", "/channels/0/harmonics/0/degrees",
         -150.0},
        {"--harmonic 5:0.06:30:1", "/channels/1/harmonics/0/firstLineDegrees", 150.0},
        {"--harmonic 3:0.1:0:4 --harmonic 3:0.1:180:4", "/channels/4/harmonics",
         nlohmann::json::array()},
        {"--signal steady-60hz", "/lines", 360},
        {"--signal phase-modulation-1hz --set percent=-5 --set current-radians=-2",
         "/modulations/1/phaseRadians", -2.0},
        {"--signal phase-modulation-1hz --set percent=-5 --set current-radians=-2",
         "/modulations/1/amplitudePercent", -5.0},
        {"--signal phase-modulation-1hz", "/modulations/0/shape", "sine"},
        {"--signal flicker-1620", "/modulations/0/shape", "rectangle"},
        {"--signal swell-110-50hz", "/events", nlohmann::json::array()},
        {"--signal interruption-250-50hz", "/events/0/kind", "interruption"},
        {"--signal steady-50hz --set seconds=1 --disturbance 0.5:0.5:0.5:0:0", "/events/0/end",
         nullptr},
        {"--neutral sum,zero --harmonic 3:0.1:0:4,5,6", "/channels/7/harmonics/0/percent", nullptr},
        {"--signal frequency-step-up", "/frequency/largestHertzPerSecond", nullptr},
        {"--signal frequency-step-up", "/frequency/points/2/line", 36000},
        {"--signal dip-0-half-50hz-at90 --phases 30,-90,150,0,0,-120,120,0",
         "/disturbances/0/begin/line", 3660},
    };
    for (const Case& it : cases) {
        const CommandResult result = generate(it.mArguments + std::string(" --truth t.json"));
        ASSERT_EQ(result.mExitCode, 0) << result;
        const auto truth = nlohmann::json::parse(mRunner.readFile("t.json"));
        const nlohmann::json value =
            truth.value(nlohmann::json::json_pointer(it.mPlace), nlohmann::json());
        EXPECT_EQ(value, it.mValue) << it.mArguments << it.mPlace;
    }
}

TEST_F(GenerateTest, ReportsErrors)
{
    struct Case
    {
        const char* mArguments;
        int mExitCode;
        const char* mProblem;
    };
    const Case cases[] = {
        {"extra", 2, "unknown argument 'extra'"},
        {"--frequency 49,95", 2, "--frequency: '49,95': expected HZ, for example 49.95"},
        {"--frequency 0", 2,
         "frequency 0 Hz: expected more than 1/360 Hz and at most 2777777 Hz, so that a 360th of a "
         "period is at least 1 ns and less than 1 s"},
        {"--duration 1000000", 2,
         "duration 1e+06 s: this is 18000000000 samples, expected at most 2147483647"},
        {"--phases 0,0,0,0,0,0,0", 2,
         "--phases: '0,0,0,0,0,0,0': expected P0,...,P7, for example 0,-120,120,0,-30,-150,90,0"},
        {"--amplitudes 1,1,1,1,1,1,1,2147483648", 2,
         "channel 7 can reach 2.14748e+09: expected at most 2147483647, values have 32 bits"},
        {"--harmonic 3:0.1:0:0 --harmonic 5:0.1:0", 2,
         "--harmonic: '5:0.1:0': expected ORDER:RATIO:DEGREES:CHANNELS, for example "
         "5:0.06:0:0,1,2"},
        {"--harmonic 1:0.1:0:0", 2, "harmonic of order 1: expected an order from 2 to 179"},
        {"--disturbance 0:0.1:1:0:8", 2,
         "--disturbance: '0:0.1:1:0:8': expected START:SECONDS:FACTOR:DEGREES:CHANNELS, for "
         "example 0.3:0.4:0.4:-30:0"},
        {"--disturbance 0.9:0.2:1:0:0", 2,
         "disturbance from 0.9 s to 1.1 s: expected to lie between 0 s and the end of the wave at "
         "1 s"},
        {"--signal nothing", 2,
         "--signal: 'nothing': no signal has this name; the nearest are flicker-1, flicker-2, "
         "flicker-7; "
         "vx-case generate --list shows all"},
        {"--signal steady-50hz --set x=1", 2,
         "--set: 'x=1': expected PARAMETER=NUMBER; steady-50hz has the parameters frequency, "
         "seconds"},
        {"--signal steady-50hz --set seconds=-1", 2,
         "--set: 'seconds=-1': expected seconds=NUMBER, 0 to 86400 (s, of the file; 0 is one "
         "period)"},
        {"--signal steady-50hz --set seconds=1=2", 2,
         "--set: 'seconds=1=2': expected seconds=NUMBER, 0 to 86400 (s, of the file; 0 is one "
         "period)"},
        {"--neutral sum", 2, "--neutral: 'sum': expected CURRENT,VOLTAGE, for example sum,zero"},
        {"--signal dip-0-one-50hz --set phases=1.5", 2,
         "--set: 'phases=1.5': expected phases=NUMBER, 1 to 3 (a whole number of phases, from the "
         "first on)"},
        {"--signal interharmonic-75hz --set hertz=9000", 2,
         "tone of 9000 Hz: expected 0 Hz or more and less than 9000 Hz, half of the samples in a "
         "second"},
        {"--truth one -o ./one", 2, "one: --truth is the same file as -o ./one; name another file"},
        {"-o no/such.csv", 1, "no/such.csv: No such file or directory"},
    };
    for (const Case& it : cases) {
        const CommandResult result = generate(it.mArguments);
        SCOPED_TRACE(it.mArguments);
        EXPECT_EQ(result.mExitCode, it.mExitCode);
        EXPECT_EQ(result.mOutput, "");
        EXPECT_EQ(result.mErrors, std::string("vx-case: ") + it.mProblem +
                                      (it.mExitCode == 2 ? "; see --help\n" : "\n"));
    }
}

TEST_F(GenerateTest, RemarksOnASeam)
{
    const CommandResult result =
        generate("--signal phase-modulation-1hz --set hertz=1.3 --set current-percent=1");
    EXPECT_EQ(result.mExitCode, 0);
    EXPECT_EQ(result.mErrors,
              "remark: modulation of 1.3 Hz: 1.3 cycles in 1 s; played over and "
              "over, it jumps where the file ends\n");
}

TEST_F(GenerateTest, NeutralIsTheSumOfThePhases)
{
    const std::string fault =
        " --amplitudes 10,0,0,7,20,0,0,9 --phases "
        "90,0,0,90,90,0,0,90";
    for (const auto& [rule, end] :
         {std::pair{"--duration 0.02 --neutral given,given", "10;0;0;7;20;0;0;9"},
          {"--duration 0.02 --neutral sum,zero", "10;0;0;0;20;0;0;20"},
          {"--duration 0.02 --neutral zero,sum", "10;0;0;10;20;0;0;0"},
          {"--signal steady-50hz", "10;0;0;7;20;0;0;9"}}) { // given by its amplitude
        const CommandResult result = generate(rule + fault);
        EXPECT_EQ(split(result.mOutput, '\n').at(2), std::string("0;0.000000000;0;0;50;") + end);
    }
}

/** The program loads all of it, and its time stamps are those of the truth. */
TEST_F(GenerateTest, ProgramLoadsTheCatalogue)
{
    const std::string directory = mRunner.path("some signals");
    const Words command{VX_CASE, "catalogue", directory, "frequency-step-up", "flicker-1620"};
    ASSERT_EQ(mRunner.run(command).mExitCode, 0);
    configuration::CaseConfiguration configuration;
    const QString name = QString::fromStdString(directory + "/vx-simulator.conf");
    ASSERT_TRUE(configuration.read(name, configuration::CaseConfiguration::Rejected::Stop));
    EXPECT_EQ(configuration.lineErrors(), std::vector<std::string>{});
    EXPECT_EQ(configuration.configurations().keys(), (QList<qint32>{0, 1, 2}));
    EXPECT_EQ(configuration.configurations()[0][0].mFileName.toStdString(),
              directory + "/steady-50hz.csv");
    const QString file = configuration.configurations()[1][0].mFileName;
    EXPECT_EQ(file.toStdString(), directory + "/frequency-step-up.csv");

    waveform::ValueFileSource source(file.toStdString());
    waveform::SignalBlock block;
    std::vector<double> stamps;
    while (source.read(block)) {
        stamps.insert(stamps.end(), block.mSeconds.begin(), block.mSeconds.end());
    }
    const auto truth =
        nlohmann::json::parse(mRunner.readFile("some signals/frequency-step-up.json"));
    EXPECT_EQ(truth["lines"], stamps.size());
    EXPECT_EQ(truth["signal"], "frequency-step-up");
    for (const auto& point : truth["frequency"]["points"]) {
        EXPECT_NEAR(point["seconds"].get<double>(), stamps[point["line"].get<size_t>()], 1e-12);
    }
    const auto flicker = nlohmann::json::parse(mRunner.readFile("some signals/flicker-1620.json"));
    EXPECT_EQ(flicker["pst"], 1.0);
}
