#include <gtest/gtest.h>

#include "CommandRunner.h"
#include "generate/Wave.h"

/** Computed by hand. */
TEST(WaveTest, HarmonicsAndDisturbancesChangeTheirChannels)
{
    WaveParameters parameters;
    EXPECT_EQ(Wave(parameters).valuesOf(10),
              (Wave::Values{56482, -305653, 249171, 0, -2418, -4545, 6964, 0}));
    parameters.mDuration = 0.04;
    parameters.mChannels.fill({1000, 0});
    parameters.mHarmonics = {{3, 0.2, 90, 0x01}};
    parameters.mDisturbances = {{0.02, 0.01, 0.4, -30, 0x03}, {0.025, 0.01, 0.5, 30, 0x02}};
    ASSERT_EQ(problemOf(parameters), "");
    struct Case
    {
        qint64 mSample;
        qint32 mValues[3];
    };
    for (const Case& it :
         {Case{0, {200, 0, 0}}, Case{60, {666, 866, 866}}, Case{359, {182, -17, -17}},
          Case{360, {-200, -200, 0}}, Case{390, {80, 0, 500}}, Case{449, {263, 343, 1000}},
          Case{450, {266, 200, 1000}}, Case{539, {210, 3, 17}}, Case{540, {-200, -250, 0}},
          Case{629, {-989, -437, -1000}}, Case{630, {-1000, -1000, -1000}}}) {
        const Wave::Values values = Wave(parameters).valuesOf(it.mSample);
        for (std::size_t channel = 0; channel < 3; ++channel) {
            EXPECT_EQ(values[channel], it.mValues[channel]) << it.mSample << ' ' << channel;
        }
    }
    parameters.mHarmonics[0].mOrder = 179;
    EXPECT_EQ(problemOf(parameters), "");
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

TEST_F(GenerateTest, SaysWhatIsWrong)
{
    struct Case
    {
        const char* mArguments;
        int mExitCode;
        const char* mProblem;
    };
    const Case cases[] = {
        {"extra", 2, "The following argument was not expected: extra"},
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
        {"-o no/such.csv", 1, "vx-case: no/such.csv: No such file or directory"},
    };
    for (const Case& it : cases) {
        const CommandResult result = generate(it.mArguments);
        SCOPED_TRACE(it.mArguments);
        EXPECT_EQ(result.mExitCode, it.mExitCode);
        EXPECT_EQ(result.mOutput, "");
        EXPECT_EQ(result.mErrors.substr(0, result.mErrors.find('\n')), it.mProblem);
    }
}
