#include <gmock/gmock.h>

#include "CommandRunner.h"

using testing::HasSubstr;

namespace {

/** Nights with the real programs, in real time. */
class CampaignTest : public testing::Test
{
protected:
    CommandResult runExample(const Words& options) const
    {
        return runPlan(VX_EXAMPLES "/night.toml", options);
    }

    CommandResult runPlan(const std::string& plan, const Words& options) const
    {
        const auto folderOf = [](const std::string& program) {
            return program.substr(0, program.rfind('/'));
        };
        const std::string path =
            "PATH=" + folderOf(VX_SANDBOX) + ':' + folderOf(VX_SIMULATOR) + ":/usr/bin:/bin";
        return mRunner.run(joined({"env", path, VX_CAMPAIGN, "run", plan, "-o", "night"}, options));
    }

    CommandRunner mRunner;
};

TEST_F(CampaignTest, ExampleNightPasses)
{
    const CommandResult result = runExample({});
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mOutput, "Passed: 11 plays of 10 cases\nnight/report.html\n");
    EXPECT_EQ(mRunner.readFile("night/plan.toml"), readFile(VX_EXAMPLES "/night.toml"));

    const CommandResult again = runExample({});
    EXPECT_EQ(again.mExitCode, 2);
    EXPECT_THAT(again.mErrors, HasSubstr("night has a night already; name another folder"));

    const std::pair<const char*, const char*> rows[] = {
        {"night/journal.jsonl", "--resume: the night began without --fifo"},
        {"none", "--log: none: there is no such file"},
        {"night", "--log: night: is a directory"},
    };
    for (const auto& [log, message] : rows) {
        const CommandResult elsewhere =
            mRunner.run({"sh", "-c", "rm -f fifo && mkfifo fifo && exec 3<>fifo && exec \"$@\"",
                         "sh", VX_CAMPAIGN, "run", VX_EXAMPLES "/night.toml", "-o", "night",
                         "--resume", "--fifo", "fifo", "--log", log});
        EXPECT_EQ(elsewhere.mExitCode, 2) << elsewhere;
        EXPECT_THAT(elsewhere.mErrors, HasSubstr(message));
    }
}

TEST_F(CampaignTest, LostBlockFailsItsCaseOnly)
{
    const CommandResult result = runExample({"--only", "harmonics,unbalance-negative", "--fault",
                                             "adc-in:85:EIO", "--fault", "r2h:99999:EIO"});
    EXPECT_THAT(result.mErrors, HasSubstr("remark: the fault r2h:99999:EIO did not happen"));
    EXPECT_THAT(mRunner.readFile("night/report.html"), HasSubstr("the fault r2h:99999:EIO"));
    EXPECT_EQ(result.mExitCode, 1) << result;
    const std::string table = mRunner.readFile("night/cases.csv");
    EXPECT_THAT(table, HasSubstr("\nharmonics,1,1,failed,"));
    EXPECT_THAT(table, HasSubstr("\nunbalance-negative,1,2,passed,"));
    EXPECT_THAT(mRunner.readFile("night/junit.xml"), HasSubstr("<failure "));
}

/** Refused before a folder is created. */
TEST_F(CampaignTest, RejectsWhatCannotBePlayed)
{
    mRunner.writeFile("file", "");
    ASSERT_EQ(mRunner.run({"mkfifo", "fifo"}).mExitCode, 0);
    const struct
    {
        Words mOptions;
        const char* mMessage;
    } rows[] = {
        {{"--fault", "adc-in:3s:EFOO"}, "vx-sandbox: --fault takes FILE:WHEN:WHAT"},
        {{"--seed", "1"}, "--seed requires --shuffle"},
        {{"--shuffle", "--seed", "-1"}, "--seed: '-1': expected a whole number, 0 to 1844"},
        {{"--start-at", "2026-01-01T00:00"}, "--start-at: 2026-01-01T00:00 is in the past"},
        {{"--fifo", "none", "--log", "file"}, "--fifo: none: there is no such FIFO"},
        {{"--fifo", "file", "--log", "file"}, "--fifo: file: not a FIFO"},
        {{"--fifo", "fifo", "--log", "file"}, "--fifo: fifo: nobody reads it"},
    };
    for (const auto& row : rows) {
        const CommandResult result = runExample(row.mOptions);
        EXPECT_EQ(result.mExitCode, 2) << result;
        EXPECT_THAT(result.mErrors, HasSubstr(row.mMessage));
    }
    const CommandResult noSandbox = mRunner.run({"env", "PATH=/usr/bin:/bin", VX_CAMPAIGN, "run",
                                                 VX_EXAMPLES "/night.toml", "-o", "night"});
    EXPECT_EQ(noSandbox.mExitCode, 2) << noSandbox;
    EXPECT_THAT(noSandbox.mErrors, HasSubstr("cannot run vx-sandbox"));
    EXPECT_NE(mRunner.run({"ls", "night"}).mExitCode, 0);
}

/** Expected values are measured, and a device that measured the same is good. */
TEST_F(CampaignTest, MeasuredValuesAreJudged)
{
    mRunner.writeFile("dip.toml",
                      "gap = 0.5\n[[case]]\nname = \"dip\"\nsignal = \"dip-70-25-50hz\"\n"
                      "expect = [\"rms-half\", \"events\"]\n");
    const CommandResult run = runPlan("dip.toml", {});
    ASSERT_EQ(run.mExitCode, 0) << run;
    EXPECT_EQ(mRunner.readFile("night/expected/dip-0.bin"), "");
    const std::string values = mRunner.readFile("night/expected/dip-0.csv");
    for (const char* row : {",dip-residual,U,160.9999", ",dip-duration,U,0.5"}) {
        EXPECT_NE(values.find(row), std::string::npos) << row;
    }
    const auto judge = [this](const std::string& measured) {
        return mRunner.run({VX_CAMPAIGN, "judge", "night", measured, "--limits", "pq-a"});
    };
    const CommandResult good = judge("night/expected/dip-0.csv");
    EXPECT_EQ(good.mExitCode, 0) << good;
    EXPECT_THAT(good.mOutput, HasSubstr("\ndip  good: 1 play within the limits\n"));
    mRunner.writeFile("nothing.csv", "utc,quantity,channel,value,unit,origin\n");
    EXPECT_EQ(judge("nothing.csv").mExitCode, 1);
    EXPECT_THAT(mRunner.readFile("night/junit.xml"), HasSubstr("type=\"NOT OBSERVED\""));
    const CommandResult resumed = runPlan("dip.toml", {"--resume"});
    EXPECT_EQ(resumed.mExitCode, 1) << resumed;
    EXPECT_THAT(resumed.mOutput, HasSubstr("not good")) << "the assessment counts as before";
    const CommandResult unsafe = judge("night/cases.csv");
    EXPECT_EQ(unsafe.mExitCode, 2) << unsafe;
    EXPECT_THAT(unsafe.mErrors, HasSubstr("would overwrite the measured values"));
}

/** Files of the user with the name of an output. */
TEST_F(CampaignTest, UserFilesAreNotOverwritten)
{
    ASSERT_EQ(mRunner.run({"mkdir", "night"}).mExitCode, 0);
    for (const std::string name : {"program.log", "cases.csv"}) {
        mRunner.writeFile("night/" + name, "mine");
        const CommandResult result = runExample({"--only", "harmonics"});
        EXPECT_EQ(result.mExitCode, 2) << result;
        EXPECT_THAT(result.mErrors,
                    HasSubstr("night/" + name + " already exists; name another folder"));
        EXPECT_EQ(mRunner.readFile("night/" + name), "mine");
    }
}

} // namespace
