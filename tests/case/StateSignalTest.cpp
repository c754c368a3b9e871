#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "CommandRunner.h"
#include "SeededRandom.h"
#include "base/Numbers.h"
#include "states/StateFile.h"
#include "states/StateLayout.h"
#include "states/StateSignal.h"

/** The layout and signal of states in a text. */
struct Played
{
    explicit Played(const std::string& text, bool isAligned = false)
        : mPlan(states::parseStates(text, "states.toml")),
          mLayout(mPlan, isAligned),
          mSignal(mPlan, mLayout)
    {
        for (qint64 line = 0; line < mLayout.timeline().lineCount(); ++line) {
            mLines.push_back(mSignal.read(line));
        }
    }

    states::StatePlan mPlan;
    states::StateLayout mLayout;
    states::StateSignal mSignal;
    std::vector<generate::LineValues> mLines;
};

/** Computed by hand. */
TEST(StateSignalTest, MatchesTheClosedForm)
{
    const Played played(R"(
scale = [100, 10]
neutral = { voltage = "sum" }
[[state]]
periods = 1
voltage.A = "100@30"
current.B = "10@90"
[[state]]
periods = 0.25
voltage.A = 50
current.A = { value = "20@0", offset = 7, tau = 0.02 }
current.B = { value = "5@-90", offset = "auto", tau = 0.01 }
harmonics.voltage = ["3:10%@90"]
[[state]]
at = "A@180"
periods = 1
harmonics.voltage = []
swing = { hz = 25, voltage = 0.5, current = -0.5, degrees = 90 }
)");
    const double peak = std::sqrt(2.0);
    struct Case
    {
        size_t mLine;
        size_t mChannel;
        double mValue;
    };
    // The second state lasts from line 450 to 510, where A is at 180 degrees; the swing has its
    // peak 180 lines, a quarter of its period, later.
    const Case cases[] = {
        {0, 0, 100 * 100 * peak * 0.5},
        {0, 3, 100 * 100 * peak * 0.5},
        {60, 5, 10 * 10 * peak * -std::cos(240.0 * base::kRadiansPerDegree)},
        {360, 0, 50 * 100 * peak * (0.5 + 0.1 * std::cos(90.0 * base::kRadiansPerDegree))},
        {420, 0, 50 * 100 * peak * (1.0 + 0.1 * std::sin(360.0 * base::kRadiansPerDegree))},
        {360, 4, 70},
        {450, 4, 20 * 10 * peak + 70 * std::exp(-0.25)},
        {360, 5, 10 * 10 * peak},
        {450, 5, 0 + (10 + 5) * 10 * peak * std::exp(-0.5)},
        {450, 7, 20 * 10 * peak + 70 * std::exp(-0.25) + 15 * 10 * peak * std::exp(-0.5)},
        {510, 0, 0},
        {690, 0, 50 * 100 * peak * 1.5 * std::sin(360.0 * base::kRadiansPerDegree)},
        {600, 0, 50 * 100 * peak * (1.0 + 0.5 * std::sqrt(0.5)) * -1.0},
        {690, 4,
         20 * 10 * peak * 0.5 * std::sin(420.0 * base::kRadiansPerDegree) +
             70 * std::exp(-330.0 / 360.0)},
    };
    ASSERT_EQ(played.mLines.size(), 510U + 360U);
    for (const Case& it : cases) {
        EXPECT_NEAR(played.mLines[it.mLine][it.mChannel], it.mValue, 1e-6)
            << it.mLine << ' ' << it.mChannel;
    }
}

namespace {
/**
 * A random sequence of states with `at`, periods or seconds, steps and ramps of the frequency, and
 * swings.
 */
std::string randomStates(std::mt19937& random)
{
    const auto number = [&random](double min, double max) {
        return std::to_string(std::uniform_real_distribution<double>(min, max)(random));
    };
    const auto oneOf = [&random](const Words& texts) { return texts[random() % texts.size()]; };
    std::string text =
        "[[state]]\nperiods = 1.3\nvoltage = { balanced = \"230@17\" }\ncurrent = "
        "{ balanced = \"5@-40\" }\n";
    for (int state = 0; state < 6; ++state) {
        text += "[[state]]\n" +
                oneOf({"seconds = " + number(0.003, 0.06), "periods = " + number(0.1, 2.5)}) +
                "\nvoltage = { balanced = " + number(1.0, 300.0) + " }\n" +
                oneOf({"", "at = \"B@" + number(-360.0, 360.0) + "\"\n"}) +
                oneOf({"", "frequency = " + number(45.0, 55.0) + "\n",
                       "frequency = { to = 30, rate = " + number(-20.0, -0.1) + " }\n"}) +
                oneOf({"", "swing = \"off\"\n",
                       "swing = { hz = " + number(0.1, 9.0) + ", voltage = " + number(-0.9, 0.9) +
                           ", degrees = " + number(-90.0, 90.0) + " }\n"});
    }
    return text;
}

/**
 * Angle of the space vector of three phases, minus a degree per line; independent of the amplitude.
 */
double degreesOfPhases(const generate::LineValues& values, size_t first, size_t line)
{
    const double alpha = (2.0 * values[first] - values[first + 1] - values[first + 2]) / 3.0;
    const double beta = (values[first + 1] - values[first + 2]) / std::sqrt(3.0);
    return std::remainder(std::atan2(alpha, -beta) / base::kRadiansPerDegree - double(line % 360),
                          360.0);
}

} // namespace

/**
 * The phase of the voltages is continuous in every state; a swing shifts the currents as specified.
 */
TEST(StateSignalTest, PhaseIsContinuous)
{
    std::mt19937 random = seededRandom();
    for (int sequence = 0; sequence < 100; ++sequence) {
        const std::string text = randomStates(random);
        SCOPED_TRACE(text);
        const Played played(text);
        size_t state = 0;
        for (size_t line = 0; line < played.mLines.size(); ++line) {
            state += played.mLayout.beginOf(state + 1) == qint64(line) ? 1 : 0;
            ASSERT_NEAR(degreesOfPhases(played.mLines[line], 0, line), 17.0, 1e-6) << line;
            double moved = -40.0;
            if (const auto& swing = played.mPlan.mStates[state].mSwing) {
                const auto& timeline = played.mLayout.timeline();
                const double seconds = timeline.secondsOf(qint64(line)) -
                                       timeline.secondsOf(played.mLayout.beginOf(swing->mSince));
                moved += swing->mDegrees * std::sin(2.0 * base::kPi * swing->mHertz * seconds);
            }
            ASSERT_NEAR(degreesOfPhases(played.mLines[line], 4, line), moved, 1e-6) << line;
        }
    }
}

/** A frequency begins with a period of the file; the resulting delay is reported. */
TEST(StateLayoutTest, FollowsFrequencies)
{
    const std::string text = R"(
frequency = 50
[[state]]
periods = 2.25
[[state]]
name = "down"
seconds = 1
frequency = { to = 48, rate = -4 }
[[state]]
periods = 1
frequency = 60
)";
    const states::StatePlan plan = states::parseStates(text, "states.toml");
    const states::StateLayout layout(plan, false);
    const generate::Timeline& timeline = layout.timeline();
    EXPECT_EQ(layout.beginOf(1), 810);
    EXPECT_EQ(timeline.frequencyOf(1079), 50.0F);
    // The ramp runs from 0.045 s on; the middle of the period is 0.07 s.
    EXPECT_NEAR(timeline.frequencyOf(1080), 50.0 - 4.0 * 0.025, 1e-3);
    EXPECT_EQ(timeline.frequencyOf(layout.beginOf(2) - 1), 48.0F);
    EXPECT_NEAR(timeline.secondsOf(layout.beginOf(2)), 1.045, 0.5 / 48 / 360);
    ASSERT_EQ(layout.remarks().size(), 3U);
    EXPECT_EQ(layout.remarks()[0],
              "state 'down' begins 90 lines into a period: its frequency begins 270 lines (15.000 "
              "ms) later, with the next period; --align rounds the states to whole periods");
    const states::StateLayout aligned(plan, true);
    EXPECT_EQ(aligned.beginOf(1), 720);
    EXPECT_EQ(aligned.beginOf(2) % 360, 0);
    EXPECT_NEAR(aligned.timeline().secondsOf(aligned.beginOf(2)), 1.04, 0.5 / 48 * 361 / 360);
    EXPECT_EQ(aligned.remarks(), std::vector<std::string>{});
}

/** By their formulas, from the flux of one phase. */
TEST(StateSignalTest, MacrosFollowTheFlux)
{
    const Played inrush(R"(
[[state]]
periods = 1
voltage = { balanced = "230@0" }
inrush = { peak = 40, tau = 0.02, knee = 1.2, remanence = [0.5, 0, 0] }
)");
    // The flux of A is at its highest after half a period, that of B before it at its lowest.
    const double fluxA = 1.0 + 1.5 * std::exp(-0.5);
    EXPECT_NEAR(inrush.mLines[180][4], 40'000.0 * (fluxA - 1.2) / 0.8, 1e-6);
    EXPECT_EQ(inrush.mLines[0][4], 0.0);
    const double fluxB = -1.0 - 0.5 * std::exp(-120.0 / 360.0);
    EXPECT_NEAR(inrush.mLines[120][5], 40'000.0 * (fluxB + 1.2) / 0.8, 1e-6);

    const Played replaced(R"(
[[state]]
periods = 0.5
voltage.A = "230@0"
inrush = { peak = 40, tau = 1e6 }
[[state]]
periods = 1
inrush = "off"
current.A = { value = "1@90", offset = "auto", tau = 0.02 }
)");
    // The peak of the inrush becomes the offset, less that of the current that has turned by then.
    const double fundamental = -1'000.0 * std::sqrt(2.0);
    EXPECT_NEAR(replaced.mLines[180][4], 40'000.0, 0.01);
    EXPECT_NEAR(replaced.mLines[360][4], -fundamental + (40'000.0 - fundamental) * std::exp(-0.5),
                0.01);

    const Played saturated(R"(
[[state]]
periods = 1
current.A = "10@90"
ct = { knee = 5, burden = 1 }
)");
    // The flux of 10 A reaches that of the knee where the sine is a half; it falls again where the
    // current turns negative, and is at its lower end a turn of 60 degrees later.
    const auto& lines = saturated.mLines;
    EXPECT_NEAR(lines[28][4], 10'000.0 * std::sqrt(2.0) * std::cos(28 * base::kRadiansPerDegree),
                1e-6);
    EXPECT_EQ(lines[32][4], 0.0);
    EXPECT_EQ(lines[89][4], 0.0);
    EXPECT_NEAR(lines[120][4], -10'000.0 * std::sqrt(2.0) * 0.5, 1e-6);
    EXPECT_EQ(lines[185][4], 0.0);
}
