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
#include "states/StateFile.h"
#include "states/StateLayout.h"
#include "waveform/ValueFileSource.h"

/** Each message has the position in the file. */
TEST(StateFileTest, ReportsErrorsWithTheirPosition)
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
         "2:10: a non-ASCII character, which is allowed in comments only"},
        {"x = \"\"\"\n", "1:5: three quotes; expected a string in single quotes, on one line"},
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
         "1:9: scale: expected two numbers: counts per volt and per ampere"},
        {"scale = [1000]\n[[state]]\nseconds = 1\n",
         "1:9: scale: expected two numbers: counts per volt and per ampere"},
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
         "1:23: neutral.current: expected text in quotes"},
        {"neutral = { current = 'sum' }\n[[state]]\nseconds = 1\ncurrent.N = 1\n",
         "4:13: current.N: expected neutral.current = \"given\" with it"},
        {"neutral = { voltage = 'given' }\n[[state]]\nseconds = 1\ncurrent.N = 1\n",
         "1:23: neutral.voltage: no state has voltage.N; expected it in a state,"},
        {"[[state]]\nname = 'x'\n", "1:1: seconds: missing; a state has seconds or periods"},
        {"[[state]]\nseconds = 1\nperiods = 50\n",
         "2:11: seconds: periods is given, too; expected one of the two"},
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
        {"[[state]]\nseconds = 1\nname = 3\n", "3:8: name: expected text in quotes"},
        {"[[state]]\nseconds = 1\nat = 'A@0'\n",
         "3:6: at: not allowed in the first state, which begins with the file"},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 'D@0'\n",
         "5:6: at: expected a phase and an angle of its voltage, such as \"A@90\""},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 'A'\n",
         "5:6: at: expected a phase and an angle of its voltage, such as \"A@90\""},
        {"[[state]]\nseconds = 1\n[[state]]\nseconds = 1\nat = 90\n",
         "5:6: at: expected text in quotes"},
        {"[[state]]\nseconds = 1\nvoltage = 230\n",
         "3:11: voltage: expected a table with balanced, A, B, C, N"},
        {"[[state]]\nseconds = 1\nvoltage.a = 230\n",
         "3:9: voltage.a: unknown key; the nearest is A, and all are balanced, A"},
        {"[[state]]\nseconds = 1\nvoltage = { balanced = 230, B = 1 }\n",
         "3:33: voltage.B: balanced gives it a value already; expected one of the t"},
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
         "3:32: current.A.tau: expected offset beside it"},
        {"[[state]]\nseconds = 1\ncurrent.A = { offset = 'auto', tau = 1 }\n",
         "3:13: current.A.value: missing"},
        {"[[state]]\nseconds = 1\ncurrent.A = { value = 1, offset = 'big', tau = 1 }\n",
         "3:35: current.A.offset: expected \"auto\" or the value at the start of the state in "
         "amperes"},
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
         "3:13: frequency: from 50 Hz, a rate of 1 Hz/s never reaches 49 Hz"},
        {"[[state]]\nseconds = 1\nfrequency = { to = 49, rate = 0 }\n",
         "3:31: frequency.rate: expected a rate other than 0; leave it"},
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
        {"[[state]]\nseconds = 1\ninrush = { peak = 1, tau = 1, remanence = [0, -1, 1.1] }\n",
         "3:51: inrush.remanence: expected a number of at least -1 and at most 1"},
        {"[[state]]\nseconds = 1\nvoltage.A = '230@-1.1e6'\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nseconds = 1\nvoltage.A = '230@1.1e6'\n",
         "3:13: voltage.A: expected an rms value of 0 or more, and an angle wher"},
        {"[[state]]\nperiods = 1.5e-3\n", ""}, // rounded to a line
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
        const std::string begin = it.mBegin;
        EXPECT_THAT(message, testing::StartsWith(begin.empty() ? "" : "f:" + begin));
        EXPECT_EQ(message.empty(), begin.empty()) << message;
    }
}

/** The values of each state in the JSON agree with a Fourier sum over its lines. */
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
            const auto& values = state["channels"][channel];
            const double rms = values["fundamentalRms"];
            EXPECT_NEAR(std::abs(sum), rms, 0.1) << begin << ' ' << channel;
            const std::complex<double> expected =
                rms == 0.0 ? 0.0
                           : std::polar(rms, values["fundamentalDegrees"].get<double>() *
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
    runner.writeFile("f.toml",
                     "[[state]]\nperiods = 2\n[[state]]\nperiods = 1\nfrequency = 48\n[[state]]\n"
                     "periods = 1\nfrequency = 52\n[[state]]\nperiods = 2\nfrequency = 50\n");
    EXPECT_EQ(generate("--states f.toml --truth f.json -o f.csv").mExitCode, 0);
    const auto frequency = nlohmann::json::parse(runner.readFile("f.json"))["frequency"];
    EXPECT_NEAR(frequency["minimumHertz"].get<double>(), 1e9 / (57870 * 360), 1e-6);
    EXPECT_NEAR(frequency["maximumHertz"].get<double>(), 1e9 / (53418 * 360), 1e-6);
    EXPECT_THAT(split(generate("--states s.toml --neutral zero,zero").mOutput, '\n').back(),
                testing::EndsWith(";0"));
    EXPECT_EQ(generate("--states s.toml --frequency 60").mExitCode, 2);
    EXPECT_EQ(generate("--align").mExitCode, 2);
    EXPECT_EQ(generate("--states s.toml -o s.toml").mExitCode, 2);
}
