#include "SandboxedTest.h"

using testing::HasSubstr;
using testing::MatchesRegex;

/** The real vx-control and the real simulator, with the paths of the device. */
class ControlTest : public SandboxedTest
{
};

TEST_F(ControlTest, RunningSimulatorAnswers)
{
    mRunner.writeFile("idle.csv", repeated(valueLine("0", "50"), 360));
    mRunner.writeFile("sag.csv", repeated(valueLine("0", "50"), 360));
    mRunner.writeFile("vx-simulator.conf",
                      "0,1,idle.csv\n1,1,sag.csv\n2,1,sag.csv\n2,1,idle.csv\n");
    const std::string control = VX_CONTROL " --config vx-simulator.conf ";
    const std::string waiting = control + "--events e.jsonl --log simulator.log --wait 60 ";
    const CommandResult result = sandbox(
        {"--events", "e.jsonl"},
        after("(until " + waiting + "once 1 2>early >answers; do sleep 0.1; done; " + waiting +
                  "play 2 >>answers; echo $? >>answers; " + waiting +
                  "once sag 2>>answers; echo $? >>answers; " + control +
                  "--wait 0.1 --log no.log play 0 2>>answers; echo $? >>answers; kill $$) &",
              kSimulator));
    EXPECT_THAT(mRunner.readFile("answers"),
                MatchesRegex(
                    "INFO Configuration Execute Config 1 once\n"
                    "INFO Configuration Execute Config 2 continuous\n0\n"
                    "vx-control: 'sag' is played by several configurations; give a number: 1, 2\n"
                    "1\nvx-control: written, but the log says nothing about it after 0.1 s.*\n1\n"))
        << result;
    EXPECT_THAT(log(), HasSubstr("Execute Config 1 once\nINFO Configuration Execute Config 2"));
    // Whole lines among those of the sandbox; the first attempts found no FIFO.
    std::string commands;
    for (const Event& event : eventsOf(mRunner.readFile("e.jsonl"))) {
        if (event.mFile == "simulator_control" && event.mIsAccepted) {
            commands += std::to_string(event.mBytes) + " bytes ";
        }
    }
    EXPECT_EQ(commands, "3 bytes 2 bytes ");
}

TEST_F(ControlTest, ReportsErrorsOfTheCommandLine)
{
    for (const Words& words :
         {Words{},
          {"list", "x"},
          {"once"},
          {"stop", "1"},
          {"--wait", "x", "once", "1"},
          {"--wait", "0", "once", "1"},
          {"--wait", "1e7", "once", "1"},
          {"--log", "x", "once", "1"},
          {"--events", "x", "list"},
          {"--events=", "once", "1"},
          {"--config", "x", "--events", "./x", "once", "1"},
          {"--config", "c", "--fifo", "x", "--events", "x", "once", "1"},
          {"--config", "c", "--log", "x", "--wait", "1", "--events", "x", "once", "1"},
          {"--no"}}) {
        const CommandResult result = mRunner.run(joined({VX_CONTROL}, words));
        EXPECT_EQ(result.mExitCode, 2) << result;
        EXPECT_THAT(result.mErrors, MatchesRegex("vx-control: .*\n"));
    }
}

TEST_F(ControlTest, ListsWhatTheSimulatorCanPlay)
{
    mRunner.writeFile("c", "0,1,a.csv\nx,1,b.csv\n1,1,c.csv\n");
    const CommandResult list = mRunner.run({VX_CONTROL, "--config", "c", "list"});
    EXPECT_EQ(list.mOutput, "0  1 x a.csv  (continuous from the start)\n") << list;
    EXPECT_THAT(list.mErrors,
                MatchesRegex("vx-control: c:2: .*; the simulator stops reading here\n"));
}

TEST_F(ControlTest, ReportsALostResult)
{
    mRunner.writeFile("c", "0,1,a.csv\n");
    for (const std::string arguments : {"--config c list", "--help"}) {
        const CommandResult result =
            mRunner.run({"sh", "-c", VX_CONTROL " " + arguments + " >/dev/full"});
        EXPECT_EQ(result.mExitCode, 1);
        EXPECT_EQ(result.mErrors,
                  "vx-control: cannot write to standard output: No space left on device\n");
    }
}
