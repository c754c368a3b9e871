#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRunner.h"
#include "SampleRecord.h"
#include "base/Numbers.h"

using testing::HasSubstr;
using testing::Not;

namespace {
/** A text file of three voltages, A before B before C. */
std::string textOf(double hertz, double volts, double seconds)
{
    constexpr double kRate = 6400.0;
    std::string text = "t [s],UA [V],UB [V],UC [V]\n";
    for (int i = 0; i < seconds * kRate; ++i) {
        const double angle = base::kTwoPi * hertz * i / kRate;
        text += fmt::format("{}", i / kRate);
        for (const int phase : {0, 1, 2}) {
            const double own = angle - base::kTwoPi * phase / 3.0;
            text += fmt::format(",{:.9g}", std::sqrt(2.0) * volts * std::cos(own));
        }
        text += '\n';
    }
    return text;
}
} // namespace

/** Remarks of measure on a signal that is probably not what its user thinks. */
class MeasureInputTest : public testing::Test
{
protected:
    CommandResult run(const std::string& arguments) const
    {
        return mRunner.run(split(VX_CASE + (" " + arguments)));
    }

    /** @return the values of one quantity and channel */
    static std::vector<double> valuesOf(const CommandResult& result, const std::string& row)
    {
        std::vector<double> values;
        const std::string& text = result.mOutput;
        for (size_t at = text.find(row); at != std::string::npos; at = text.find(row, at + 1)) {
            values.push_back(std::stod(text.substr(at + row.size())));
        }
        return values;
    }

    CommandRunner mRunner;
};

TEST_F(MeasureInputTest, RemarksOnProbableMistakes)
{
    struct Case
    {
        const char* mGenerate;
        const char* mMeasure;
        const char* mRemark; ///< empty for none
    };
    const Case cases[] = {
        {"--duration 0.5", "", ""},
        {"--duration 0.5", "--nominal 240,5,50", ""},
        {"--duration 0.5", "--nominal 400,5,50",
         "the median of its voltages is 230 V, but the nominal voltage is 400 V"},
        {"--duration 0.5", "--scale 4000,1000", "the median of its voltages is 57.5 V"},
        {"--signal dip-80-250-50hz", "", ""},
        {"--signal interruption-250-50hz", "", ""},
        {"--duration 0.5 --phases 0,120,-120,0,-30,-150,90,0", "",
         "the negative sequence of the voltages is larger"},
        {"--duration 0.5 --phases 0,-120,120,0,-30,90,-150,0", "",
         "the negative sequence of the currents is larger"},
        {"--duration 0.5 --amplitudes 325269,0,0,0,7071,0,0,0", "", ""},
        {"--duration 0.5", "--scale 1e-300,1e-300",
         "values are left out, because they are too large"},
    };
    for (const Case& it : cases) {
        ASSERT_EQ(run(std::string("generate -o s.csv ") + it.mGenerate).mExitCode, 0);
        const CommandResult result =
            run(std::string("measure s.csv --begin 2026-01-01T00:00:00Z --quantities "
                            "rms-half,rms,unbalance,power,events ") +
                it.mMeasure);
        EXPECT_EQ(result.mExitCode, 0) << result;
        EXPECT_THAT(result.mErrors, HasSubstr(it.mRemark)) << it.mGenerate << it.mMeasure;
        EXPECT_EQ(result.mErrors.empty(), *it.mRemark == '\0') << result.mErrors;
        EXPECT_THAT(result.mOutput, Not(testing::ContainsRegex(",-?(inf|nan),")));
    }
}

/** Windows of 10 periods at 50 Hz and of 12 at 60 Hz last 0.2 s. */
TEST_F(MeasureInputTest, TextFileIsMeasuredAtTheFrequencyOfItsSamples)
{
    struct Case
    {
        double mHertz;
        double mSeconds;
        const char* mRemark;
    };
    for (const Case& it :
         {Case{60.0, 1.0, "its nominal frequency is unknown: 60 Hz is assumed, as in its samples"},
          {57.0, 1.0, "60 Hz is assumed, as"},
          {51.0, 1.0, "50 Hz is assumed, as"},
          {60.0, 0.1, "60 Hz is assumed, as"},
          {60.0, 0.03, "its nominal frequency is unknown: 50 Hz is assumed; see"}}) {
        mRunner.writeFile("r.csv", textOf(it.mHertz, 230.0, it.mSeconds));
        const CommandResult result = run("measure r.csv --quantities rms,frequency");
        EXPECT_THAT(result.mErrors, HasSubstr(it.mRemark));
        if (it.mSeconds >= 1.0) {
            EXPECT_NEAR(valuesOf(result, ",frequency,,").at(5), it.mHertz, 1e-3);
            EXPECT_NEAR(valuesOf(result, ",rms,UB,").at(1), 230.0, 1e-3);
        }
    }
}

/** Values whose squares are infinite: the command ends, and writes no "inf". */
TEST_F(MeasureInputTest, HugeValuesAreLeftOut)
{
    mRunner.writeFile("r.csv", textOf(50.0, 1e300, 0.5));
    const CommandResult result = run("measure r.csv");
    EXPECT_EQ(result.mExitCode, 0) << result.mErrors;
    EXPECT_THAT(result.mOutput, Not(testing::ContainsRegex(",-?(inf|nan),")));
}

/**
 * The lines stay in step with the fundamental after a dip of some phases, so no value is missing at
 * the end.
 */
TEST_F(MeasureInputTest, HalfPeriodsContinueAfterAnUnbalancedDip)
{
    for (const char* const signal : {"dip-40-10-50hz-1phase", "dip-40-10-50hz-2phases",
                                     "swell-140-50hz-2phases-at90", "dip-40-10-50hz"}) {
        ASSERT_EQ(run(std::string("generate -o s.csv --signal ") + signal).mExitCode, 0);
        const CommandResult result =
            run("measure s.csv --quantities rms-half --begin "
                "2026-01-01T00:00:00Z");
        const size_t lines = std::string(signal).find("at90") == std::string::npos ? 12600 : 12960;
        EXPECT_EQ(valuesOf(result, ",rms-half,UA,").size(), lines / 180 - 1) << signal;
    }
}

TEST_F(MeasureInputTest, ReplacingTheUtcOfTheDriverIsReported)
{
    std::string records;
    for (quint32 i = 0; i < 720; ++i) {
        const SampleRecord record{1'700'000'000, i * 55'555, i, 0, {}};
        records.append(reinterpret_cast<const char*>(&record), sizeof record);
    }
    mRunner.writeFile("r.bin", records);
    const char* const text =
        "--begin replaces the UTC of its first sample, 2023-11-14 22:13:20.000000000 UTC";
    EXPECT_THAT(run("measure r.bin --begin 2026-01-01T00:00:00Z").mErrors, HasSubstr(text));
    EXPECT_THAT(run("measure r.bin").mErrors, Not(HasSubstr("replaces")));
}
