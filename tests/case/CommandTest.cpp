#include <nlohmann/json.hpp>

#include "SampleRecord.h"
#include "SandboxedTest.h"

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {
const Words kCommands = {"generate", "catalogue", "check", "import", "info",
                         "export",   "explain",   "judge", "plot"};

/** The lines of a help text that can be typed. */
Words examplesOf(const std::string& help)
{
    Words examples;
    for (const std::string& line : split(help.substr(help.find("\nExample")), '\n')) {
        if (line.rfind("  vx-case ", 0) == 0) {
            examples.push_back(line);
        }
    }
    return examples;
}
} // namespace

/** The tool as the user calls it, with recordings of the simulator in the sandbox. */
class CommandTest : public SandboxedTest
{
protected:
    CommandResult vxCase(const std::string& arguments) const
    {
        return mRunner.run(split(VX_CASE + (" " + arguments)));
    }

    /** Plays two configurations, the second once. */
    void record()
    {
        mRunner.writeFile("vx-simulator.conf", "0,1,steady.csv\n1,1,event.csv\n");
        ASSERT_EQ(vxCase("generate --duration 0.1 -o steady.csv").mExitCode, 0);
        ASSERT_EQ(vxCase("generate --duration 0.6 --disturbance 0.2:0.2:0.4:-30:0 -o event.csv")
                      .mExitCode,
                  0);
        const CommandResult result = sandbox(
            {"--for", "1.5", "--send", "0.3:s1", "--record", "r.bin", "--events", "e.jsonl"},
            kSimulator);
        ASSERT_EQ(result.mExitCode, 0) << result;
    }
};

TEST_F(CommandTest, HelpShowsExamplesThatWork)
{
    record();
    mRunner.writeFile("recording.bin", mRunner.readFile("r.bin"));
    mRunner.writeFile("events.jsonl", mRunner.readFile("e.jsonl"));
    ASSERT_EQ(vxCase("export event.csv -o fault.cfg").mExitCode, 0);
    mRunner.writeFile("event.toml", "[[state]]\nperiods = 1\n");
    mRunner.writeFile("expected.csv",
                      "utc,quantity,channel,value,unit,origin\n"
                      "2026-01-01T00:00:01Z,rms,UA,230,V,measured\n");
    // Pictures are not tested here, so gnuplot need not be installed.
    mRunner.writeFile("gnuplot", "#!/bin/sh\nexec cat\n");
    mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
    const std::string path = "PATH=.:$(dirname " VX_CASE "):$PATH; ";
    for (const std::string& command : kCommands) {
        const Words examples = examplesOf(vxCase(command + " --help").mOutput);
        EXPECT_FALSE(examples.empty()) << command;
        EXPECT_THAT(vxCase(command + " --help").mOutput,
                    Not(ContainsRegex("\n  -[^\n]* [.]{3}|[(]1x[)]")))
            << "several values in a row are taken by no option";
        for (const std::string& example : examples) {
            if (command != "catalogue") { // 162 MB
                const CommandResult result = mRunner.run({"sh", "-c", path + example});
                EXPECT_EQ(result.mExitCode, 0) << example << result;
            }
        }
    }
    EXPECT_THAT(mRunner.readFile("run.svg"), HasSubstr("set terminal svg"));
}

TEST_F(CommandTest, WrongCommandLinesEndWithStatusTwo)
{
    for (const auto& [arguments, error] : std::vector<std::pair<std::string, std::string>>{
             {"", "A subcommand is required"},
             {"nonsense", "unknown argument 'nonsense'"},
             {"info --xx", "unknown argument '--xx'"},
             {"explain r.bin", "--config is required"},
             {"explain r.bin --config c.conf --events e --events ./e",
              "--events: ./e is the same file as e: name each file once"},
             {"export in.csv", "-o is required"},
             {"import r.cfg --configuration c.conf", "--configuration requires -o"}}) {
        const CommandResult result = mRunner.run(joined({VX_CASE}, split(arguments)));
        EXPECT_EQ(result.mExitCode, 2) << arguments;
        EXPECT_EQ(result.mErrors, "vx-case: " + error + "; see --help\n");
    }
    EXPECT_EQ(vxCase("--version").mOutput.substr(0, 10), "vx-case 1.");
}

/** Explains to people and to programs, onto standard output and into a file. */
TEST_F(CommandTest, ExplainReportsWhatWasPlayed)
{
    record();
    const std::string arguments = "explain r.bin --config vx-simulator.conf --events e.jsonl";
    const CommandResult good = vxCase(arguments);
    EXPECT_EQ(good.mExitCode, 0) << good;
    const Words lines = split(good.mOutput, '\n');
    ASSERT_EQ(lines.size(), 6U) << good;
    EXPECT_THAT(lines[0], StartsWith("configuration file "));
    EXPECT_THAT(lines[1], StartsWith("0             steady.csv "));
    EXPECT_THAT(lines[2], StartsWith("command 's1' at "));
    EXPECT_THAT(lines[3], testing::MatchesRegex("1 +event.csv +1 .*"));
    EXPECT_EQ(lines[1].size(), lines[3].size()) << "in columns";
    EXPECT_THAT(lines[4], StartsWith("0             steady.csv "));
    EXPECT_THAT(lines[5], testing::MatchesRegex("verdict: good: [0-9]+ samples as expected"));

    // A sample of the event is changed, and a block of it is missing.
    std::string bytes = mRunner.readFile("r.bin");
    const size_t begin = std::stoul(split(lines[1]).back()) * sizeof(SampleRecord);
    bytes[begin + 47] ^= 1;
    bytes.erase(begin + 720 * sizeof(SampleRecord), 360 * sizeof(SampleRecord));
    mRunner.writeFile("r.bin", bytes);
    EXPECT_EQ(vxCase("explain r.bin --config vx-simulator.conf -o text.txt").mExitCode, 1);
    EXPECT_THAT(mRunner.readFile("text.txt"),
                testing::EndsWith("\nverdict: BAD: samples that differ from their file 1, samples "
                                  "missing 360\n"));
    const CommandResult bad = vxCase("explain r.bin --config vx-simulator.conf --json");
    EXPECT_EQ(bad.mExitCode, 1);
    std::vector<nlohmann::json> findings;
    for (const std::string& line : split(bad.mOutput, '\n')) {
        const auto report = nlohmann::json::parse(line);
        if (report["kind"] == "finding") {
            findings.push_back({report["finding"], report["record"], report["count"]});
        } else if (report["kind"] == "verdict") {
            EXPECT_EQ(report["good"], false);
            EXPECT_EQ(report["missing"], 360);
            EXPECT_EQ(report["samples"], bytes.size() / sizeof(SampleRecord));
        }
    }
    const size_t first = begin / sizeof(SampleRecord) + 1;
    EXPECT_THAT(findings, ElementsAre(nlohmann::json{"differs", first, 1},
                                      nlohmann::json{"missing", first + 720, 360}));
}

TEST_F(CommandTest, CheckLooksInTheGivenDirectory)
{
    const std::string directory = mRunner.path("cases");
    mRunner.run({"mkdir", directory});
    mRunner.writeFile("cases/a.csv", repeated(valueLine("7", "50"), 360));
    mRunner.writeFile("good.conf", "0,1,a.csv\n");
    mRunner.writeFile("cases/b.csv", valueLine("7", "60"));
    mRunner.writeFile("odd.conf", "0,1,a.csv\n0,0,a.csv\n1,1,b.csv\n1,1,a.csv\n");
    const CommandResult good = vxCase("check good.conf --strict --json --directory cases");
    EXPECT_EQ(good.mExitCode, 0) << good;
    const auto report = nlohmann::json::parse(good.mOutput);
    EXPECT_EQ(report["errors"].size() + report["warnings"].size(), 0U);
    EXPECT_EQ(report["configurations"][0]["samples"], 360);
    EXPECT_EQ(report["configurations"][0]["continuous"], true);
    EXPECT_EQ(report["bytesOnDevice"], 360 * 56);
    const CommandResult odd = vxCase("check odd.conf --directory cases");
    EXPECT_EQ(odd.mExitCode, 0);
    EXPECT_THAT(odd.mOutput, HasSubstr("50 to 60  b.csv, a.csv\n"));
    EXPECT_EQ(vxCase("check odd.conf --directory cases --strict").mExitCode, 1);
    EXPECT_EQ(vxCase("check good.conf").mExitCode, 1) << "the names begin elsewhere";
    EXPECT_THAT(vxCase("check good.conf --directory no").mErrors, HasSubstr("no such directory"));
    EXPECT_THAT(sandbox({}, {VX_CASE, "check"}).mErrors,
                StartsWith("Configuration file not found: vx-simulator.conf\n"));
}

/**
 * Each mistake alone: the check reports it with the simulator's message. If a rejected line would
 * make the simulator wait forever, a missing number 0 ends it.
 */
TEST_F(CommandTest, CheckUsesTheMessagesOfTheSimulator)
{
    const std::string good = valueLine("7", "50");
    const struct
    {
        const char* mConfiguration;
        std::string mValues;
        const char* mWords;
    } rows[] = {
        {"1,1,v.csv\nx,1,v.csv\n", good,
         "vx-simulator.conf:2: First parameter (x) is not of type quint32\n"},
        {"1,1,v.csv\n0,-1,v.csv\n", good,
         "vx-simulator.conf:2: Second parameter (-1) is not of type quint32"},
        {"1,1,v.csv\n\n0,1\n", good,
         "vx-simulator.conf:3: Wrong number of parameter. Expected: 3, found 2: "},
        {"0,1,gone\n", good, "could not open file: gone"},
        {"0,1,gone\n", good, "openFileInternal() : Das I/O-Device 'gone' existiert nicht."},
        {"0,1,/usr\n", good, "'/usr' kann nicht geöffnet werden: file to open is a directory."},
        {"0,1,v.csv\n2,1,v.csv\n", good, "no configuration found."},
        {"0,1,v.csv\n", good + "1;2\n", "v.csv:2: Wrong number of parameter. Expected: 13, found"},
        {"0,1,v.csv\n", valueLine("7", "50,1"), "v.csv:1: Parameter (50,1) is not of type float"},
        {"0,1,v.csv\n", valueLine("-7", "50"), "v.csv:1: Parameter (-7) is not of type quint32"},
        {"0,1,v.csv\n", valueLine("7", "0"),
         "frequency of 0 Hz cannot be played (step of 0 ns or of a second and more)"},
    };
    for (const auto& row : rows) {
        mRunner.writeFile("vx-simulator.conf", row.mConfiguration);
        mRunner.writeFile("v.csv", row.mValues);
        EXPECT_THAT(vxCase("check vx-simulator.conf").mErrors, HasSubstr(row.mWords));
        mRunner.writeFile("simulator.log", "");
        sandbox({"--for", "0"}, kSimulator);
        EXPECT_THAT(log(), HasSubstr(row.mWords));
    }
}

/** The JSON for each kind of file. */
TEST_F(CommandTest, InfoDescribesEveryKindOfFile)
{
    record();
    ASSERT_EQ(vxCase("export event.csv -o fault.cff").mExitCode, 0);
    ASSERT_EQ(vxCase("export event.csv -o fault.csv").mExitCode, 0);
    for (const auto& [name, format, samples] : {std::tuple{"event.csv", "value file", 10800},
                                                {"fault.cff", "COMTRADE 2013, BINARY32", 10800},
                                                {"fault.csv", "text file, decimal sign '.'", 10800},
                                                {"r.bin", "recording of the driver", 0}}) {
        const CommandResult result = vxCase(std::string("info --json ") + name);
        ASSERT_EQ(result.mExitCode, 0) << result;
        const auto report = nlohmann::json::parse(result.mOutput);
        EXPECT_EQ(report["format"], format);
        EXPECT_TRUE(samples == 0 || report["samples"] == samples) << result;
        EXPECT_NEAR(report["measuredHz"].get<double>(), 50, 0.02) << result;
        EXPECT_LT(report["measuredFrom"], report["measuredTo"]) << result;
        EXPECT_EQ(report["channels"].size(), 8U) << result;
    }
    EXPECT_THAT(
        vxCase("info fault.cff").mOutput,
        testing::AllOf(HasSubstr("station   vx-simulator\n"), HasSubstr("nominal   50 Hz")));
}
