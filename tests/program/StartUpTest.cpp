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

TEST_F(StartUpTest, WhatEndsTheProgram)
{
    struct Case
    {
        Words mCommand;
        int mExitCode;
        std::string mOutput; ///< with this beginning
        std::string mErrors;
        std::string mLog;
    };
    const std::string help =
        "Usage: " VX_SIMULATOR " [options]\nSimulation der Hardware für das Varn core-system.\n";
    const std::string noFile = "Specified configuration file not found: ";
    const std::string trackName = "vx-simulator.trackconfig.xml";
    const Words withTrack = {VX_SIMULATOR, "--track", "track.xml"};
    // A program in one of the other directories does not list it twice.
    const Words inEtc =
        after(std::string("cp ") + VX_SIMULATOR + " /etc/vx", {"/etc/vx/vx-simulator"});
    const Case cases[] = {
        {{VX_SIMULATOR, "--version"}, 0, "vx-simulator 1.2.1524 by yocto\n", "", ""},
        {{VX_SIMULATOR, "--help"}, 0, help, "", ""},
        {{VX_SIMULATOR, "--nonsense"}, 1, "", "vx-simulator: Unknown option 'nonsense'.\n", ""},
        {joined(withTrack, {"--config"}), 1, "", "vx-simulator: Missing value after '--config'.\n",
         ""},
        {{VX_SIMULATOR, "--track="}, 255, "", noFile + "\n", ""},
        {{VX_SIMULATOR}, 255, "", notFound(trackName, mOwnDirectory, "track"), ""},
        {inEtc, 255, "", notFound(trackName, "", "track"), ""},
        {withTrack, 255, "", notFound("vx-simulator.conf", mOwnDirectory, "config"), kStartLine},
        {kSimulator, 255, "", noFile + "vx-simulator.conf\n", kStartLine},
    };
    for (const Case& it : cases) {
        const CommandResult result = sandbox({}, it.mCommand);
        SCOPED_TRACE(testing::PrintToString(it.mCommand));
        EXPECT_EQ(result.mExitCode, it.mExitCode);
        EXPECT_EQ(programOutput(result).substr(0, it.mOutput.size()), it.mOutput);
        EXPECT_EQ(result.mErrors, it.mErrors);
        EXPECT_EQ(log(), it.mLog);
        std::filesystem::remove(mRunner.path("simulator.log"));
    }
}

/** Both files have their default names beside the program, then also in /etc/vx. */
TEST_F(StartUpTest, DefaultFilesAreTakenFromTheFirstDirectory)
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
        const std::string text = log(std::string(name) + ".log");
        EXPECT_NE(text.find(std::string("INFO Simulator Parsing of-") + name + ".csv'."),
                  std::string::npos)
            << text;
    }
    EXPECT_EQ(split(log("own.log"), '\n').front() + "\n", kStartLine);
}
