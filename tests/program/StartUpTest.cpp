#include <filesystem>

#include "SandboxedTest.h"
#include "Sanitizer.h"

namespace {
constexpr char kStartTime[] = "INFO PrussSimulation start timeSECONDS\n";
constexpr char kEnd[] = "INFO vx-simulator done.\nINFO vx-simulator Terminating\n";
} // namespace

/** The command line, the search for the configuration files, and what prevents playing. */
class StartUpTest : public SandboxedTest
{
protected:
    /** The message about a default file that is in none of the directories. */
    std::string notFound(const std::string& fileName, const std::string& ownDirectory,
                         const std::string& option) const
    {
        return "Configuration file not found: " + fileName +
               "\nAdd it to one of these directories:\n"
               "  /etc/vx\n"
               "  /opt/vx/share/vx-core/defaults\n" +
               ownDirectory + "  " + mRunner.path(".config") + "\n  /nowhere/xdg\n" +
               "or specify file with command line argument: " + option + "\n";
    }

    /** Expects how a program ends; its output may continue after `output`. */
    void expectEnd(const Words& program, int exitCode, const std::string& output,
                   const std::string& errors, const std::string& log,
                   const Words& options = {}) const
    {
        SCOPED_TRACE(testing::PrintToString(program));
        const CommandResult result = sandbox(options, program);
        EXPECT_EQ(result.mExitCode, exitCode);
        EXPECT_THAT(programOutput(result), testing::StartsWith(output));
        EXPECT_EQ(result.mErrors, errors);
        EXPECT_EQ(SandboxedTest::log(), log);
        std::filesystem::remove(mRunner.path("simulator.log"));
    }

    /** A copy of the program: beside the original, the build puts a logging configuration. */
    const Words mCopy =
        after(std::string("mkdir -p own && cp ") + VX_SIMULATOR + " own", {"own/vx-simulator"});
    const std::string mOwnDirectory = "  " + mRunner.path("own") + "\n";
};

TEST_F(StartUpTest, CommandLineAndMissingFiles)
{
    const std::string noFile = "Specified configuration file not found: ";
    const std::string trackName = "vx-simulator.trackconfig.xml";
    const Words withTrack = joined(mCopy, {"--track", "track.xml"});
    // A program in one of the other directories does not list that directory twice.
    const Words inEtc =
        after(std::string("cp ") + VX_SIMULATOR + " /etc/vx", {"/etc/vx/vx-simulator"});
    expectEnd({VX_SIMULATOR, "--version"}, 0, "vx-simulator 1.2.1524 by yocto\n", "", "");
    expectEnd({VX_SIMULATOR, "--help"}, 0,
              "Usage: " VX_SIMULATOR
              " [options]\nSimulation der Hardware für das Varn core-system.\n",
              "", "");
    for (const std::string option : {"--help", "--version"}) {
        expectEnd({"sh", "-c", "exec " VX_SIMULATOR " " + option + " >/dev/full"}, 1, "",
                  "vx-simulator: standard output: No space left on device\n", "");
    }
    expectEnd({VX_SIMULATOR, "--nonsense"}, 1, "", "vx-simulator: Unknown option 'nonsense'.\n",
              "");
    expectEnd(joined(withTrack, {"--config"}), 1, "",
              "vx-simulator: Missing value after '--config'.\n", "");
    expectEnd({VX_SIMULATOR, "--track="}, 255, "", noFile + "\n", "");
    expectEnd(mCopy, 255, "", notFound(trackName, mOwnDirectory, "track"), "");
    expectEnd(inEtc, 255, "", notFound(trackName, "", "track"), "");
    expectEnd(withTrack, 255, "", notFound("vx-simulator.conf", mOwnDirectory, "config"),
              kStartLine);
    expectEnd(kSimulator, 255, "", noFile + "vx-simulator.conf\n", kStartLine);
}

/** Both files have their default names beside the program, then also in /etc/vx. */
TEST_F(StartUpTest, TakesDefaultFilesFromTheFirstDirectory)
{
    for (const std::string name : {"etc", "own"}) {
        mRunner.writeFile(name + ".xml", trackConfiguration(name + ".log"));
        mRunner.writeFile(name + ".conf", "0,1,of-" + name + ".csv\n");
    }
    const std::string beside = std::string("mkdir -p own && cp ") + VX_SIMULATOR +
                               " own && cp own.xml own/vx-simulator.trackconfig.xml && "
                               "cp own.conf own/vx-simulator.conf";
    const std::string inEtc =
        " && cp etc.xml /etc/vx/vx-simulator.trackconfig.xml && cp etc.conf "
        "/etc/vx/vx-simulator.conf";
    for (const auto& [script, name] :
         {std::pair(beside, "own"), std::pair(beside + inEtc, "etc")}) {
        EXPECT_EQ(sandbox({}, after(script, {"own/vx-simulator"})).mExitCode, 0);
        EXPECT_THAT(
            log(std::string(name) + ".log"),
            testing::HasSubstr(std::string("INFO Simulator Parsing of-") + name + ".csv'."));
    }
    EXPECT_EQ(split(log("own.log"), '\n').front() + "\n", kStartLine);
}

/** Only an unusable one is replaced; an intentionally silent one is kept. */
TEST_F(StartUpTest, ReplacesAnUnusableLoggingConfiguration)
{
    const std::string name = "größe.xml";
    const auto runWith = [&](const std::string& text) {
        mRunner.writeFile(name, text);
        return sandbox({}, {VX_SIMULATOR, "--track", name, "--config", "no.conf"});
    };
    const std::string noFile = "Specified configuration file not found: no.conf\n";
    for (const char* text : {"", "not XML at all", "<html><body/></html>", "<unclosed"}) {
        const CommandResult result = runWith(text);
        EXPECT_THAT(result.mErrors, testing::AllOf(testing::HasSubstr("Logging configuration '" +
                                                                      name + "' cannot be read"),
                                                   testing::EndsWith(noFile)));
        EXPECT_THAT(programOutput(result), testing::HasSubstr("Starting (Version"));
    }
    const CommandResult silent = runWith(
        "<?xml version='1.0'?><!DOCTYPE log4j:configuration SYSTEM 'log4j.dtd'>"
        "<log4j:configuration xmlns:log4j='x'><root><level value='off'/></root>"
        "</log4j:configuration>");
    const CommandResult piped = sandbox({}, {"bash", "-c", "exec \"$@\" --track <(cat größe.xml)",
                                             "", VX_SIMULATOR, "--config", "no.conf"});
    for (const CommandResult& result : {silent, piped}) {
        EXPECT_EQ(result.mErrors, noFile);
        EXPECT_EQ(programOutput(result), "");
    }
}

/** The status is 0, and the log has the reason. */
TEST_F(StartUpTest, EndsCleanlyWhenNothingCanBePlayed)
{
    const std::string kLoaded =
        "INFO Configuration Total 1 lines parsed.\nINFO Simulator File 'vx-simulator.conf' "
        "loaded.\n"
        "INFO Simulator Parsing ";
    const std::string kAborted = " Problem while handling line. abort.\n";
    const std::string kNotLoaded = "ERROR vx-simulator could not load data files.\n";
    const std::string kIsDirectory =
        " openFileInternal() : Das I/O-Device '/usr' kann nicht geöffnet werden: file to open is a "
        "directory.\n";
    const auto expectReason = [this](const std::string& configuration, const std::string& values,
                                     const std::string& reason, const Words& options = {},
                                     const std::string& errors = "") {
        mRunner.writeFile("vx-simulator.conf", configuration);
        mRunner.writeFile("values.csv", values);
        expectEnd(kSimulator, 0, "", errors, kStartLine + (kStartTime + reason) + kEnd, options);
    };
    // Lines before the bad one are kept; here they name a value file that does not exist.
    expectReason("0,1,no.csv\nä\xff\n1,1,never.csv\n", "",
                 "ERROR Configuration vx-simulator.conf:2: Wrong number of parameter. Expected: 3, "
                 "found 1: ä\xef\xbf\xbd\nERROR Configuration" +
                     kAborted + "INFO Configuration Total 2 lines parsed.\n" +
                     kLoaded.substr(kLoaded.find('\n') + 1) +
                     "no.csv'.\nFATAL CsvParser openFileInternal() : Das I/O-Device 'no.csv' "
                     "existiert nicht.\nERROR Simulator could not open file: no.csv\n" +
                     kNotLoaded);
    expectReason(
        "0,1,values.csv\n", valueLine("0", "50"),
        kLoaded +
            "values.csv'.\nINFO CsvParser Total 1 lines parsed.\n"
            "INFO Simulator All data files parsed.\n"
            "FATAL PrussSimulation openFile : Das Device '/dev/adc-in' existiert nicht.\n"
            "FATAL Simulator Could not initialze Prus-Simulation\n",
        {"--fault", "adc-in:1:vanish"},
        "vx-sandbox: the program ended before any write triggered the fault adc-in:1:vanish\n");
    const Words onDirectory = {VX_SIMULATOR, "--track", "track.xml", "--config", "/usr"};
    expectEnd(onDirectory, 0, "", "",
              kStartLine + (kStartTime + ("FATAL Configuration" + kIsDirectory)) +
                  "ERROR Simulator Could not open file '/usr'.\n"
                  "ERROR vx-simulator could not load config file: /usr\n" +
                  kEnd);
}

TEST_F(StartUpTest, EndsCleanlyWhenMemoryRunsOut)
{
#ifdef VX_HAS_ADDRESS_SANITIZER
    GTEST_SKIP() << "it takes more address space than any limit allows";
#endif
    mRunner.writeFile("vx-simulator.conf", "0,1,values.csv\n");
    mRunner.writeFile("values.csv", "");
    std::filesystem::resize_file(mRunner.path("values.csv"), 400'000'000); // one line of NULs
    const CommandResult result = sandbox({}, after("ulimit -v 300000", kSimulator));
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    EXPECT_THAT(log(),
                testing::EndsWith("Parsing values.csv'.\nFATAL vx-simulator out of memory.\n" +
                                  std::string(kEnd)));
}
