#include <filesystem>

#include "SandboxedTest.h"

/** The command line, and where the configuration files are looked for. */
class StartUpTest : public SandboxedTest
{
protected:
    /** The message about a default file found nowhere. */
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

    const std::string mOwnDirectory =
        "  " + std::filesystem::path(VX_SIMULATOR).parent_path().string() + "\n";
};

TEST_F(StartUpTest, OptionsThatEndTheProgram)
{
    struct Case
    {
        const char* mArguments;
        int mExitCode;
        std::string mOutput;
        std::string mErrors;
    };
    const std::string noFile = "Specified configuration file not found: ";
    const Case cases[] = {
        {"--version", 0, "vx-simulator 1.2.1524 by yocto\n", ""},
        {"-v --nonsense", 1, "", "vx-simulator: Unknown option 'nonsense'.\n"},
        {"--track", 1, "", "vx-simulator: Missing value after '--track'.\n"},
        {"--track track.xml --config", 1, "", "vx-simulator: Missing value after '--config'.\n"},
        {"--track=", 255, "", noFile + "\n"},
        {"--track no.xml --config no.conf", 255, "", noFile + "no.xml\n"},
    };
    for (const Case& it : cases) {
        SCOPED_TRACE(it.mArguments);
        const CommandResult result = sandbox({}, joined({VX_SIMULATOR}, split(it.mArguments)));
        EXPECT_EQ(result.mExitCode, it.mExitCode);
        EXPECT_EQ(programOutput(result), it.mOutput);
        EXPECT_EQ(result.mErrors, it.mErrors);
        EXPECT_EQ(log(), "");
    }
}

TEST_F(StartUpTest, HelpDescribesTheOptions)
{
    const CommandResult result = sandbox({}, {VX_SIMULATOR, "--help"});
    EXPECT_EQ(result.mExitCode, 0);
    EXPECT_EQ(result.mErrors, "");
    for (const char* text :
         {"Simulation der Hardware für das Varn core-system.\n", "--track <filename>",
          "track configuration file\n", "--config <filename>", "input configuration file\n"}) {
        EXPECT_NE(programOutput(result).find(text), std::string::npos) << text << result;
    }
}

TEST_F(StartUpTest, TrackConfigurationFoundNowhere)
{
    const std::string name = "vx-simulator.trackconfig.xml";
    CommandResult result = sandbox({}, {VX_SIMULATOR});
    EXPECT_EQ(result.mExitCode, 255);
    EXPECT_EQ(programOutput(result), "");
    EXPECT_EQ(result.mErrors, notFound(name, mOwnDirectory, "track"));

    // A program in one of the other directories does not list it twice.
    const std::string copy = std::string("cp ") + VX_SIMULATOR + " /etc/vx";
    result = sandbox({}, after(copy, {"/etc/vx/vx-simulator"}));
    EXPECT_EQ(result.mExitCode, 255);
    EXPECT_EQ(result.mErrors, notFound(name, "", "track"));
}

TEST_F(StartUpTest, CaseConfigurationFoundNowhere)
{
    const Words program = {VX_SIMULATOR, "--track", "track.xml"};
    CommandResult result = sandbox({}, joined(program, {"--config", "no.conf"}));
    EXPECT_EQ(result.mExitCode, 255);
    EXPECT_EQ(result.mErrors, "Specified configuration file not found: no.conf\n");
    EXPECT_EQ(log(), kStartLine);

    result = sandbox({}, program);
    EXPECT_EQ(result.mExitCode, 255);
    EXPECT_EQ(result.mErrors, notFound("vx-simulator.conf", mOwnDirectory, "config"));
    EXPECT_EQ(log(), std::string(kStartLine) + kStartLine);
}

TEST_F(StartUpTest, UnusableTrackConfigurationLogsToTheConsole)
{
    mRunner.writeFile("broken.xml", "<log4j:configuration><root>");
    mRunner.writeFile("empty.xml", "");
    for (const std::string name : {"broken.xml", "empty.xml", "/usr"}) {
        const CommandResult result =
            sandbox({}, {VX_SIMULATOR, "--track", name, "--config", "no.conf"});
        EXPECT_EQ(result.mExitCode, 255) << result;
        EXPECT_NE(result.mErrors.find("'" + name + "'"), std::string::npos) << result;
        EXPECT_NE(programOutput(result).find("Starting (Version 1.2.1524 by yocto, Build "),
                  std::string::npos)
            << result;
    }
}

/** Both files have their default names beside the program, then also in /etc/vx. */
TEST_F(StartUpTest, DefaultFilesAreTakenFromTheFirstDirectory)
{
    for (const std::string name : {"etc", "own"}) {
        mRunner.writeFile(name + ".xml", trackConfiguration(name + ".log"));
        mRunner.writeFile(name + ".conf", "0,1,of-" + name + ".csv\n");
    }
    const std::string script =
        std::string("mkdir -p own && cp ") + VX_SIMULATOR +
        " own/vx-simulator && cp own.xml own/vx-simulator.trackconfig.xml && "
        "cp own.conf own/vx-simulator.conf";
    const std::string parsing = "INFO Simulator Parsing of-";

    EXPECT_EQ(sandbox({}, after(script, {"own/vx-simulator"})).mExitCode, 0);
    EXPECT_NE(log("own.log").find(parsing + "own.csv'."), std::string::npos) << log("own.log");

    const std::string ownLog = log("own.log");
    const std::string etcScript = script +
                                  " && cp etc.xml /etc/vx/vx-simulator.trackconfig.xml && "
                                  "cp etc.conf /etc/vx/vx-simulator.conf";
    EXPECT_EQ(sandbox({}, after(etcScript, {"own/vx-simulator"})).mExitCode, 0);
    EXPECT_NE(log("etc.log").find(parsing + "etc.csv'."), std::string::npos) << log("etc.log");
    EXPECT_EQ(log("own.log"), ownLog);
}
