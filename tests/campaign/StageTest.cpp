#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <set>

#include "CommandRunner.h"
#include "stage/Stage.h"

using namespace stage;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/** A plan and its files in a folder of the test, and the folder of a night beside them. */
class StageTest : public testing::Test
{
protected:
    Stage make(const std::string& text) const
    {
        const plan::Plan plan = plan::parsePlan(text, mFiles.path("night.toml"));
        return makeStage(plan, mFiles.path("night"));
    }

    /** The mistakes, without the folder of the test. */
    std::string mistakesOf(const std::string& text) const
    {
        try {
            make(text);
        } catch (const plan::PlanError& error) {
            return QString(error.what())
                .replace(QString::fromStdString(mFiles.path("")), "")
                .toStdString();
        }
        return "";
    }

    std::string staged(const std::string& name) const { return readFile(pathOf(name)); }

    std::string pathOf(const std::string& name) const { return mFiles.path("night/stage/" + name); }

    /** Names in a folder, hidden ones as well. */
    std::string foundIn(const std::string& folder) const
    {
        const QDir::Filters all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
        return QDir(QString::fromStdString(mFiles.path(folder)))
            .entryList(all)
            .join(',')
            .toStdString();
    }

    TestFiles mFiles;
    CommandRunner mRunner;
};

/** A value file without the comments before its lines. */
std::string linesOf(const std::string& text)
{
    return text.substr(text.find('\n', text.rfind('#')) + 1);
}

std::string oneBlock(const std::string& frequency)
{
    return repeated(valueLine("7", frequency), 360);
}

TEST_F(StageTest, FilesAreMadeOnceAndNumberedAsInThePlan)
{
    mFiles.make("mine.csv", oneBlock("60"));
    const Stage stage = make(R"(
[[case]]
name = "first"
signal = "steady-60hz"
set = { seconds = 0.5 }
times = 3
expect = ["rms"]
[[case]]
file = "mine.csv"
seconds = 1
[[case]]
name = "again"
signal = "steady-60hz"
set = { seconds = 0.5 }
)");
    EXPECT_EQ(staged("cases.conf"),
              "# made by vx-campaign from the plan \"night\"\n"
              "# configuration, repetitions, value file\n"
              "0,1,steady.csv\n1,1,first.csv\n2,60,mine.csv\n3,1,first.csv\n-1,0,\n");
    EXPECT_EQ(stage.mConfiguration, mFiles.path("night/stage/cases.conf"));
    EXPECT_THAT(QDir(QString::fromStdString(stage.mDirectory)).entryList(QDir::Files),
                ElementsAre("cases.conf", "first.csv", "mine.csv", "steady.csv"));
    EXPECT_EQ(staged("mine.csv"), oneBlock("60"));

    EXPECT_EQ(stage.mSteady.mDurationNs, 360 * 55'555);
    ASSERT_EQ(stage.mCases.size(), 3U);
    const journal::StagedCase& first = stage.mCases[0];
    EXPECT_EQ(first.mName, "first");
    EXPECT_EQ(first.mNumber, 1);
    EXPECT_EQ(first.mFile, "first.csv");
    EXPECT_EQ(first.mSamples, 30U * 360U);
    EXPECT_EQ(first.mDurationNs, 30LL * 360 * 46'296);
    EXPECT_EQ(first.mTimes, 3);
    EXPECT_EQ(first.mSource, "signal steady-60hz, seconds=0.5");
    EXPECT_THAT(first.mExpected, ElementsAre("rms"));
    const journal::StagedCase& mine = stage.mCases[1];
    EXPECT_EQ(mine.mFileRepetitions, 60U);
    EXPECT_EQ(mine.mSamples, 60U * 360U);
    EXPECT_EQ(mine.mDurationNs, 60LL * 360 * 46'296);
    EXPECT_EQ(stage.mCases[2].mFile, "first.csv");

    // Each configuration has samples of its own in the program.
    EXPECT_EQ(stage.mBytesOnDevice, (1 + 30 + 1 + 30) * 360 * 56);
    EXPECT_EQ(nightNs(stage, 1'000'000'000),
              6 * (1'500'000'000LL + 360 * 55'555) + (4 * 30 + 60) * 360LL * 46'296);
}

/** Exactly the lines that vx-case makes. */
TEST_F(StageTest, FilesEqualThoseOfVxCase)
{
    const std::string states = VX_EXAMPLES "/inrush.toml";
    const std::string recording = VX_EXAMPLES "/recordings/inrush.cfg";
    const std::tuple<const char*, std::string, Words> rows[] = {
        {"dip",
         "signal = \"dip-0-half-50hz\"\nset = { phases = 2 }",
         {"generate", "--signal", "dip-0-half-50hz", "--set", "phases=2"}},
        {"inrush", "states = \"" + states + '"', {"generate", "--states", states}},
        {"recorded",
         "recording = \"" + recording +
             "\"\nbefore = 2\nto = 0.3\nchannels = \"3=UA*0.5\"\nfrequency = \"nominal\"",
         {"import", recording, "--before", "2", "--to", "0.3", "--channels", "3=UA*0.5",
          "--frequency", "nominal"}},
    };
    std::string plan;
    for (const auto& [name, keys, words] : rows) {
        plan += std::string("[[case]]\nname = \"") + name + "\"\n" + keys + '\n';
    }
    make(plan);
    for (const auto& [name, keys, words] : rows) {
        const CommandResult result = mRunner.run(joined({VX_CASE}, words));
        EXPECT_GT(linesOf(result.mOutput).size(), 100'000U) << result.mErrors;
        EXPECT_TRUE(linesOf(staged(std::string(name) + ".csv")) == linesOf(result.mOutput)) << name;
    }
}

TEST_F(StageTest, MovedPlanMakesTheSameFiles)
{
    std::set<std::string> hashes;
    for (const std::string folder : {"here", "there"}) {
        QDir().mkpath(QString::fromStdString(mFiles.path(folder)));
        for (const std::string name : {"/inrush.cfg", "/inrush.dat"}) {
            QFile::copy(QString::fromStdString(VX_EXAMPLES "/recordings" + name),
                        QString::fromStdString(mFiles.path(folder + name)));
        }
        const plan::Plan plan = plan::parsePlan("[[case]]\nrecording = \"inrush.cfg\"\n",
                                                mFiles.path(folder + "/night.toml"));
        hashes.insert(makeStage(plan, mFiles.path(folder + "/night")).mHash);
    }
    EXPECT_EQ(hashes.size(), 1U);
}

TEST_F(StageTest, AllMistakesAreReportedAndNothingIsLeft)
{
    mFiles.make("bad.csv", oneBlock("50") + "1;2\n" + oneBlock("50") + "3\n");
    mFiles.make("empty.csv", "# nothing\n");
    mFiles.make("slow.csv", oneBlock("50") + oneBlock("0.001"));
    mFiles.make("block.csv", oneBlock("50"));
    mFiles.make("states.toml", "[[state]]\nperiods = 0\n");
    mFiles.make("at.toml",
                "[[state]]\nperiods = 2\n[[state]]\nname = \"b\"\nperiods = 2\nat = \"A@0\"\n");
    EXPECT_EQ(
        mistakesOf(R"([[case]]
file = "none.csv"
[[case]]
file = "bad.csv"
[[case]]
file = "empty.csv"
[[case]]
file = "slow.csv"
[[case]]
recording = "block.csv"
[[case]]
states = "states.toml"
[[case]]
signal = "dip-80-250-50hz"
seconds = 5
[[case]]
states = "at.toml"
align = true
)"),
        "night.toml:1:1: none: none.csv: no such file\n"
        "night.toml:3:1: bad: bad.csv:361: Wrong number of parameter. Expected: 13, found 2: "
        "1;2\n"
        "  bad.csv:722: Wrong number of parameter. Expected: 13, found 1: 3\n"
        "night.toml:5:1: empty: empty.csv: has no samples to play\n"
        "night.toml:7:1: slow: slow.csv:361: frequency of 0.001 Hz cannot be played\n"
        "night.toml:9:1: block: block.csv: is a value file already; use the key file\n"
        "night.toml:11:1: states: states.toml:2:11: periods: expected a number above 0 and at "
        "most 1e+07\n"
        "night.toml:13:1: dip-80-250-50hz: seconds: one pass of the file takes 5.500 s; "
        "expected at least that\n"
        "night.toml:16:1: at: at.toml:3:1: state 'b' has 'at', which cannot be combined with "
        "align = true");
    EXPECT_EQ(foundIn("night"), "");
}

/** A case that also plays in the gaps cannot be distinguished from them, however long it is. */
TEST_F(StageTest, RejectsACaseLikeTheSteadySignal)
{
    const std::string half = oneBlock("50").substr(0, oneBlock("50").size() / 2);
    const std::pair<std::string, bool> rows[] = {
        {oneBlock("50"), true},
        {oneBlock("50") + oneBlock("50"), true},
        {half, true}, // every sample of it is the same
        {oneBlock("60"), false},
        {oneBlock("50") + valueLine("8", "50") + oneBlock("50"), false},
        {oneBlock("50") + valueLine("8", "50"), false},
    };
    mFiles.make("steady.csv", oneBlock("50"));
    for (const auto& [samples, isRefused] : rows) {
        mFiles.make("soak.csv", samples);
        EXPECT_EQ(mistakesOf("steady = { file = \"steady.csv\" }\n"
                             "[[case]]\nfile = \"soak.csv\"\nseconds = 3600\n"),
                  isRefused
                      ? "night.toml:2:1: soak: has the same samples as the steady signal, so "
                        "nobody could see it play; change one of the two, for example its amplitude"
                      : "");
        QDir(QString::fromStdString(mFiles.path("night"))).removeRecursively();
    }
}

/** The same plan makes the same stage in any folder, so an existing one is kept or refused. */
TEST_F(StageTest, ExistingStageIsCompletedAndNeverOverwritten)
{
    mFiles.make("mine.csv", oneBlock("50"));
    const std::string text = "[[case]]\nfile = \"mine.csv\"\n[[case]]\nsignal = \"steady-60hz\"\n";
    const std::string hash = make(text).mHash;
    ASSERT_TRUE(QFile::remove(QString::fromStdString(pathOf("steady-60hz.csv"))));
    mFiles.make("night/stage/mine of the user.txt", "kept");
    EXPECT_EQ(make(text).mHash, hash);
    EXPECT_EQ(foundIn("night/stage"),
              "cases.conf,mine of the user.txt,mine.csv,steady-60hz.csv,steady.csv");
    EXPECT_EQ(foundIn("night"), "plan.toml,stage");
    EXPECT_EQ(readFile(mFiles.path("night/plan.toml")), text);
    EXPECT_EQ(QFile::permissions(QString::fromStdString(pathOf(""))),
              QFile::permissions(QString::fromStdString(mFiles.path("night"))));

    mFiles.make("mine.csv", oneBlock("60"));
    EXPECT_EQ(mistakesOf(text),
              "night/stage/mine.csv: differs from what the plan makes; name another folder, or "
              "restore the plan and its files");
    EXPECT_EQ(staged("mine.csv"), oneBlock("50"));

    ASSERT_TRUE(QDir(QString::fromStdString(pathOf(""))).removeRecursively());
    EXPECT_NE(make(text).mHash, hash);
    EXPECT_THAT(mistakesOf("# another\n" + text),
                HasSubstr("night/plan.toml: differs from what the plan"));
    EXPECT_EQ(readFile(mFiles.path("night/plan.toml")), text);
}

/** The user's view; the temporary files of a check are removed. */
TEST_F(StageTest, CheckPrintsTheTableAndKeepsFilesOnRequest)
{
    mRunner.writeFile("a.toml",
                      "gap = 1\n[[case]]\nsignal = \"steady-60hz\"\ntimes = 2\n"
                      "seconds = 1\nexpect = [\"rms\"]\n[group.g]\ncases = [\"steady-60hz\"]\n");
    mRunner.writeFile("long.toml",
                      "[[case]]\nsignal = \"steady-60hz\"\nseconds = 9000\nexpect = [\"rms\"]\n");
    mRunner.writeFile("bad.toml", "gap = -1\n[[case]]\nfile = \"none.csv\"\n");
    const std::string table =
        "number  case         times  samples  repetitions  duration/s  source\n"
        "     0  steady           -      360            1       0.020  signal steady-50hz\n"
        "     1  steady-60hz      2    21600           60       1.000  signal steady-60hz\n"
        "memory for the samples: 0.0 MiB on the 32-bit device\n"
        "recordings for the expected values: 7.0 MiB until the night is over\n"
        "1 case, 2 plays, 1 s between them: about 6.56 s\n";
    const std::tuple<Words, int, std::string, std::string> rows[] = {
        {{"a.toml", "--group", "g"}, 0, table, ""},
        {{"a.toml", "-o", "kept"}, 0, table, ""},
        {{"bad.toml"},
         2,
         "",
         "vx-campaign: bad.toml:1:7: gap: expected a number of at least 0 and at most 3600\n"
         "bad.toml:2:1: none: " +
             mRunner.path("none.csv") + ": no such file\n"},
        {{"none.toml"}, 2, "", "vx-campaign: none.toml: no such file\n"},
        {{"a.toml", "--only", "b"},
         2,
         "",
         "vx-campaign: --only: 'b': the plan has no such case; the nearest is steady-60hz\n"},
    };
    for (const auto& [words, status, output, errors] : rows) {
        const CommandResult result = mRunner.run(joined({VX_CAMPAIGN, "check"}, words));
        EXPECT_EQ(result.mExitCode, status) << result;
        EXPECT_EQ(result.mOutput, output);
        EXPECT_EQ(result.mErrors, errors);
    }
    EXPECT_THAT(mRunner.run({VX_CAMPAIGN, "check", "long.toml"}).mOutput,
                HasSubstr("8903.1 MiB until the night is over; at most 8 GiB are recorded"));
    EXPECT_THAT(mRunner.readFile("kept/stage/cases.conf"), HasSubstr("1,60,steady-60hz.csv\n"));
}

/** It is not a mistake of the plan. */
TEST_F(StageTest, FullDiskIsAFailure)
{
    mRunner.writeFile("a.toml", "[[case]]\nsignal = \"steady-60hz\"\n");
    const CommandResult result = mRunner.run(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 8; exec \"$0\" check a.toml -o night", VX_CAMPAIGN});
    EXPECT_EQ(result.mExitCode, 1) << result;
    EXPECT_THAT(result.mErrors, HasSubstr("/steady.csv: File too large\n"));
    EXPECT_EQ(mRunner.readFile("night/plan.toml"), "");
}

TEST_F(StageTest, ExamplesAreGood)
{
    for (const auto& [name, cases] : {std::pair("night", 10U), std::pair("compliance", 33U)}) {
        const plan::Plan plan = plan::readPlan(std::string(VX_EXAMPLES "/") + name + ".toml");
        EXPECT_EQ(plan.mCases.size(), cases);
    }
    const Stage night = makeStage(plan::readPlan(VX_EXAMPLES "/night.toml"), mFiles.path("night"));
    EXPECT_LT(nightNs(night, 1'000'000'000), 40'000'000'000) << "CI plays it";
}

} // namespace
