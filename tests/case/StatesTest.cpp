#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <nlohmann/json.hpp>

#include "CommandRunner.h"
#include "ReadSignal.h"
#include "SeededRandom.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "generate/WaveFile.h"
#include "states/StateFile.h"
#include "states/StateOutputs.h"
#include "waveform/ValueFileSource.h"

/** States of a text, laid out. */
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

/** Each names the place in the file. */
TEST(StateFileTest, SaysWhatIsWrongAndWhere)
{
    struct Case
    {
        const char* mText;
        const char* mBegin; ///< of the message, behind the name of the file
    };
    const Case cases[] = {
        {"", "1:1: expected states, each below [[state]]"},
        {"\nfrequency = 50\n", "1:1: expected states, each below [[state]]"},
        {"frequency = 50\n[[!state]]\n", "2:3: expected a name between the brackets"},
        {"# ä\nname = \"#ä\" # ä\n",
         "2:10: a character beyond ASCII: expected it in comments only"},
        {"x = \"\"\"\n", "1:5: three quotes: expected a string in single ones, on one line"},
        {"frequency 50", "1:11: Error while parsing key-value pair: expected '=', saw '5'"},
        {"frequency = 50\nfrequency = 60\n",
         "2:13: Error while parsing key-value pair: cannot redefine existing int"},
        {"frequency = 0.5\n[[state]]\nseconds = 1\n",
         "1:13: frequency: expected a number of at least 1 and at most 1000"},
        {"frequency = 'x'\n[[state]]\nseconds = 1\n",
         "1:13: frequency: expected a number of at least 1 and at most 1000"},
        {"frequency = nan\n[[state]]\nseconds = 1\n",
         "1:13: frequency: expected a number of at least 1 and at most 1000"},
        {"freqency = 50\n[[state]]\nseconds = 1\n",
         "1:1: freqency: unknown key; the nearest is frequency, and all are freq"},
        {"state = 3\n", "1:9: state: expected [[state]] before each state"},
        {"[state]\nseconds = 1\n", "1:1: state: expected [[state]] before each state"},
        {"scale = 1000\n[[state]]\nseconds = 1\n",
         "1:9: scale: expected two numbers: counts for a volt and for an ampere"},
        {"scale = [1000]\n[[state]]\nseconds = 1\n",
         "1:9: scale: expected two numbers: counts for a volt and for an ampere"},
        {"scale = [1000, 0]\n[[state]]\nseconds = 1\n",
         "1:16: scale: expected a number above 0 and at most 1e+09"},
        {"scale = [1000, 'x']\n[[state]]\nseconds = 1\n",
         "1:16: scale: expected a number above 0 and at most 1e+09"},
        {"neutral = 'sum'\n[[state]]\nseconds = 1\n",
         "1:11: neutral: expected a table with current, voltage"},
        {"neutral = { curent = 'sum' }\n[[state]]\nseconds = 1\n",
         "1:13: neutral.curent: unknown key; the nearest is current, and all are"},
        {"neutral = { current = 'some' }\n[[state]]\nseconds = 1\n",
         "1:23: neutral.current: expected \"sum\", \"zero\" or \"given\""},
        {"neutral = { current = 3 }\n[[state]]\nseconds = 1\n",
         "1:23: neutral.current: expected a text in quotes"},
        {"neutral = { current = 'sum' }\n[[state]]\nseconds = 1\ncurrent.N = 1\n",
         "4:13: current.N: expected neutral.current = \"given\" with it"},
        {"neutral = { voltage = 'given' }\n[[state]]\nseconds = 1\ncurrent.N = 1\n",
         "1:23: neutral.voltage: no state has voltage.N; expected one with it, o"},
        {"[[state]]\nname = 'x'\n", "1:1: seconds: missing; a state has seconds or periods"},
        {"[[state]]\nseconds = 1\nperiods = 50\n",
         "2:11: seconds: the state has periods, too; expected one of the two"},
        {"[[state]]\nseconds = 0\n", "2:11: seconds: expected a number above 0 and at most 86400"},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 2.7e-5\n",
         "4:11: state '2' lasts 0.486 lines: expected one or more"},
        {"[[state]]\nperiods = 0.001\n", "2:11: state '1' lasts 0.36 lines: expected one or more"},
        {"[[state]]\nseconds = -1\n", "2:11: seconds: expected a number above 0 and at most 86400"},
        {"[[state]]\nperiods = 0\n", "2:11: periods: expected a number above 0 and at most 1e+07"},
        {"[[state]]\nseconds = 1e9\n",
         "2:11: seconds: expected a number above 0 and at most 86400"},
        {"[[state]]\nseconds = '1'\n",
         "2:11: seconds: expected a number above 0 and at most 86400"},
        {"[[state]]\nsecnds = 1\n",
         "2:1: secnds: unknown key; the nearest is seconds, and all are name, pe"},
        {"[[state]]\nseconds = 1\nname = 3\n", "3:8: name: expected a text in quotes"},
        {"[[state]]\nseconds = 1\nat = 'A@0'\n", "3:6: at: the first state begins with the file"},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 'D@0'\n",
         "5:6: at: expected a phase and an angle of its voltage, such as \"A@90\""},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 'A'\n",
         "5:6: at: expected a phase and an angle of its voltage, such as \"A@90\""},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 90\n",
         "5:6: at: expected a text in quotes"},
        {"[[state]]\nseconds = 1\nvoltage = 230\n",
         "3:11: voltage: expected a table with balanced, A, B, C, N"},
        {"[[state]]\nseconds = 1\nvoltage.a = 230\n",
         "3:9: voltage.a: unknown key; the nearest is A, and all are balanced, A"},
        {"[[state]]\nseconds = 1\nvoltage = { balanced = 230, B = 1 }\n",
         "3:33: voltage.B: balanced gives it a value, too; expected one of the t"},
        {"[[state]]\nseconds = 1\nvoltage.A = -1\n",
         "3:13: voltage.A: expected a number of at least 0 and at most 1e+09"},
        {"[[state]]\nseconds = 1\nvoltage.A = '-1@0'\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nseconds = 1\nvoltage.A = '230@'\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nseconds = 1\nvoltage.A = '230@1@2'\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nseconds = 1\nvoltage.A = [1]\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nseconds = 1\nvoltage.A = 1e7\n",
         "3:13: state '1': channel 0 may reach 1.41421e+10 counts, the sum of"},
        {"[[state]]\nseconds = 1\nvoltage = { balanced = '1e6@0' }\nvoltage.A = 1\n",
         "4:1: Error while parsing key-value pair: cannot redefine existing tabl"},
        {"[[state]]\nseconds = 1\ncurrent.A = { value = 1, offset = 'auto' }\n",
         "3:35: current.A.offset: expected tau beside it, in seconds"},
        {"[[state]]\nseconds = 1\ncurrent.A = { value = 1, tau = 1 }\n",
         "3:32: current.A.tau: there is no offset that decays with it"},
        {"[[state]]\nseconds = 1\ncurrent.A = { offset = 'auto', tau = 1 }\n",
         "3:13: current.A.value: missing"},
        {"[[state]]\nseconds = 1\ncurrent.A = { value = 1, offset = 'big', tau = 1 }\n",
         "3:35: current.A.offset: expected \"auto\" or the value at its beginning"},
        {"[[state]]\nseconds = 1\ncurrent.A = { value = 1, offset = 1, tau = 0 }\n",
         "3:44: current.A.tau: expected a number above 0 and at most 1e+06"},
        {"[[state]]\nseconds = 1\nharmonics = ['5:3%']\n",
         "3:13: harmonics: expected a table with voltage, current"},
        {"[[state]]\nseconds = 1\nharmonics.voltage = '5:3%'\n",
         "3:21: harmonics.voltage: expected a list such as [\"5:3%@0\", \"7:2%\"]"},
        {"[[state]]\nseconds = 1\nharmonics.voltage = ['5:3']\n",
         "3:22: harmonics.voltage: expected \"ORDER:PERCENT%@DEGREES\", such as \"5"},
        {"[[state]]\nseconds = 1\nharmonics.voltage = ['5:3%', '1:3%']\n",
         "3:30: harmonics.voltage: expected \"ORDER:PERCENT%@DEGREES\", such as \"5"},
        {"[[state]]\nseconds = 1\nharmonics.voltage = ['5:3%', '7:1%', '5:1%@9']\n",
         "3:38: harmonics.voltage: order 5 is listed twice"},
        {"[[state]]\nseconds = 1\nharmonics.voltage = ['180:3%']\n",
         "3:22: harmonics.voltage: expected \"ORDER:PERCENT%@DEGREES\", such as \"5"},
        {"[[state]]\nseconds = 1\nfrequency = { rate = 1 }\n", "3:13: frequency.to: missing"},
        {"[[state]]\nseconds = 1\nfrequency = { to = 49, rate = 1 }\n",
         "3:13: frequency: from 50 Hz, a rate of 1 Hz/s does not lead to 49 Hz"},
        {"[[state]]\nseconds = 1\nfrequency = { to = 49, rate = 0 }\n",
         "3:31: frequency.rate: expected one that is not 0; without it the freque"},
        {"[[state]]\nseconds = 1\nfrequency = 2000\n",
         "3:13: frequency: expected a number of at least 1 and at most 1000"},
        {"[[state]]\nseconds = 1\nswing = 'of'\n",
         "3:9: swing: expected a table with hz, voltage, current, degrees"},
        {"[[state]]\nseconds = 1\nswing = { voltage = 0.1 }\n", "3:9: swing.hz: missing"},
        {"[[state]]\nseconds = 1\nswing = { hz = 1, voltage = 2 }\n",
         "3:29: swing.voltage: expected a number of at least -1 and at most 1"},
        {"[[state]]\nseconds = 1\ninrush = { peak = 1 }\n", "3:10: inrush.tau: missing"},
        {"[[state]]\nseconds = 1\ninrush = { peak = 1, tau = 1, remanence = 0.1 }\n",
         "3:43: inrush.remanence: expected three numbers, one for each phase"},
        {"[[state]]\nseconds = 1\ninrush = { peak = 1, tau = 1, knee = 2 }\n",
         "3:38: inrush.knee: expected a number of at least 1 and at most 1.9"},
        {"[[state]]\nseconds = 1\nct = { knee = 0, burden = 1 }\n",
         "3:15: ct.knee: expected a number above 0 and at most 1e+09"},
        {"[[state]]\nseconds = 1\nct = { knee = 10 }\n", "3:6: ct.burden: missing"},
        {"[[state]]\nseconds = 1\ncurrent = { A = 1000, B = 1000, C = 1000 }\n[[state]]\nseconds = "
         "1\nharmonics.current = ['3:99999%']\n",
         "4:1: state '2': channel 7 may reach 4.24684e+09 counts, the sum of"},
    };
    for (const Case& it : cases) {
        SCOPED_TRACE(it.mText);
        std::string message;
        try {
            const states::StatePlan plan = states::parseStates(it.mText, "f");
            const states::StateLayout layout(plan, false);
        } catch (const base::CaseError& error) {
            message = error.what();
        }
        EXPECT_THAT(message, testing::StartsWith(std::string("f:") + it.mBegin));
    }
}

/** Computed by hand. */
TEST(StateSignalTest, HasTheValuesOfClosedForm)
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
    // The second state goes on from line 450 to 510, where A is at 180 degrees; the swing is at its
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
/** A random sequence of states: at, periods or seconds, steps and ramps of the frequency, swings.
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

/** Of the space vector of three phases, less a degree for each line: no amplitude changes it. */
double degreesOfPhases(const generate::LineValues& values, size_t first, size_t line)
{
    const double alpha = (2.0 * values[first] - values[first + 1] - values[first + 2]) / 3.0;
    const double beta = (values[first + 1] - values[first + 2]) / std::sqrt(3.0);
    return std::remainder(std::atan2(alpha, -beta) / base::kRadiansPerDegree - double(line % 360),
                          360.0);
}

} // namespace

/** The voltages turn on through every state; a swing moves the currents by what it says. */
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

/** A frequency begins with a period of the file; what that costs is told. */
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

/** What the JSON says of each state is what a Fourier sum finds in its lines. */
TEST(StatesTest, TruthIsInTheSamples)
{
    std::mt19937 random = seededRandom();
    const CommandRunner runner;
    const auto phasor = [&random](double rms) {
        return fmt::format("\"{}@{}\"", std::uniform_real_distribution<double>(1.0, rms)(random),
                           std::uniform_real_distribution<double>(-180.0, 180.0)(random));
    };
    std::string text;
    for (int state = 0; state < 12; ++state) {
        text += fmt::format("[[state]]\nperiods = {}\n", 1.0 + double(random() % 200) / 100.0);
        for (const std::string quantity : {"voltage", "current"}) {
            for (const char phase : {'A', 'B', 'C'}) {
                text += fmt::format("{}.{} = {}\n", quantity, phase, phasor(400.0));
            }
        }
        text += fmt::format("harmonics.voltage = [\"{}:{}%\"]\n", 2 + random() % 30, random() % 20);
    }
    runner.writeFile("s.toml", text);
    ASSERT_EQ(runner.run({VX_CASE, "generate", "--states", "s.toml", "--truth", "t", "-o", "s"})
                  .mExitCode,
              0);
    waveform::ValueFileSource source(runner.path("s"));
    const waveform::SignalBlock all = readAll(source);
    const auto truth = nlohmann::json::parse(runner.readFile("t"));
    ASSERT_EQ(truth["states"].size(), 12U);
    for (const auto& state : truth["states"]) {
        const auto begin = state["begin"]["line"].get<size_t>();
        for (size_t channel = 0; channel < 8; ++channel) {
            std::complex<double> sum;
            for (size_t line = begin; line < begin + 360; ++line) {
                sum += all.mValues[channel][line] *
                       std::polar(std::sqrt(2.0) / 360.0,
                                  (90.0 - double(line)) * base::kRadiansPerDegree);
            }
            const auto& told = state["channels"][channel];
            const double rms = told["fundamentalRms"];
            EXPECT_NEAR(std::abs(sum), rms, 0.1) << begin << ' ' << channel;
            const std::complex<double> expected =
                rms == 0.0 ? 0.0
                           : std::polar(rms, told["fundamentalDegrees"].get<double>() *
                                                 base::kRadiansPerDegree);
            EXPECT_LE(std::abs(sum - expected), 0.1) << begin << ' ' << channel;
        }
    }
}

TEST(StatesTest, CommandWritesListsAndMeasures)
{
    const CommandRunner runner;
    const auto generate = [&runner](const std::string& arguments) {
        return runner.run(split(VX_CASE + (" generate " + arguments)));
    };
    runner.writeFile("s.toml", R"(
[[state]]
name = "before"
periods = 10
voltage = { balanced = "230@0" }
current = { balanced = "5@-30" }
[[state]]
name = "fault"
seconds = 0.1
voltage.A = "46@0"
current.A = "60@-70"
)");
    const CommandResult list = generate("--states s.toml --list-states");
    EXPECT_EQ(list.mExitCode, 0) << list;
    EXPECT_THAT(list.mOutput,
                testing::HasSubstr("2  fault   3600  0.200000        5  50   46@0  230@-120"));

    const CommandResult result = generate("--states s.toml --truth t.json -o s.csv");
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    const auto truth = nlohmann::json::parse(runner.readFile("t.json"));
    EXPECT_EQ(truth["lines"], 15 * 360);
    EXPECT_EQ(truth["states"][1]["begin"]["line"], 3600);
    EXPECT_NEAR(truth["states"][1]["channels"][0]["fundamentalRms"].get<double>(), 46'000.0, 1e-6);
    // Phases that cancel each other leave no angle at which the periods of their sum begin.
    EXPECT_EQ(truth["channels"][7]["rms"]["minimum"]["line"], 0);
    ASSERT_EQ(truth["events"].size(), 1U);
    EXPECT_EQ(truth["events"][0]["end"], nullptr);
    EXPECT_NEAR(truth["events"][0]["residualPercent"].get<double>(), 20.0, 1e-3);
    for (const std::string& line : split(runner.readFile("s.csv"), '\n')) {
        const Words fields = split(line, ';');
        if (fields.size() == 13 && line[0] != '#') {
            const int sum = std::stoi(fields[9]) + std::stoi(fields[10]) + std::stoi(fields[11]);
            ASSERT_LE(std::abs(sum - std::stoi(fields[12])), 2) << line;
        }
    }
    EXPECT_EQ(generate("--states s.toml --frequency 60").mExitCode, 2);
    EXPECT_EQ(generate("--align").mExitCode, 2);
    EXPECT_EQ(generate("--states s.toml -o s.toml").mExitCode, 2);
}
