#include <gmock/gmock.h>

#include "base/CaseError.h"
#include "plan/Plan.h"

using namespace plan;
using testing::ElementsAre;

namespace {

/** The mistakes in the text of "night.toml"; empty for none. */
std::string mistakesOf(const std::string& text)
{
    try {
        parsePlan(text, "night.toml");
    } catch (const PlanError& error) {
        return error.what();
    }
    return "";
}

std::string caseWith(const std::string& keys)
{
    return "[[case]]\nsignal = \"steady-60hz\"\n" + keys + "\n";
}

std::vector<std::string> namesOf(const std::vector<Case>& cases)
{
    std::vector<std::string> names;
    for (const Case& it : cases) {
        names.push_back(it.mName);
    }
    return names;
}

constexpr char kWholePlan[] = R"(name = "all kinds"
gap = 0.5
steady = { signal = "steady-60hz", set = { seconds = 0.1 } }
scale = [100, 10]
nominal = [63.5, 1, 60]
[[case]]
name = "dip1"
signal = "dip-70-25-50hz"
set = { phases = 1, percent = 40.5 }
times = 10
expect = ["rms-half", "events"]
[[case]]
recording = "recordings/fault.cfg"
channels = "0=UA,7=0"
scale = [100, 10]
side = "secondary"
frequency = "nominal"
from = 0.25
before = 10
loop = true
encoding = "windows-1251"
[[case]]
states = "/states/evolving.toml"
align = true
[[case]]
name = "mine"
file = "../mine.csv"
seconds = 720
[group.nightly]
cases = ["mine", "dip1"]
[group.faults]
cases = ["fault", "evolving"]
)";

TEST(PlanTest, EveryKindOfSourceIsRead)
{
    const Plan plan = parsePlan(kWholePlan, "/plans/night.toml");
    EXPECT_EQ(plan.mName, "all kinds");
    EXPECT_EQ(plan.mGapNs, 500'000'000);
    EXPECT_EQ(plan.mSteady.mText, "signal steady-60hz, seconds=0.1");
    EXPECT_EQ(plan.playCount(), 13);
    EXPECT_EQ(plan.mMeasuring.mCountsPerAmpere, 10.0);
    EXPECT_EQ(plan.mMeasuring.mNominalVolts, 63.5);
    EXPECT_EQ(plan.mMeasuring.mNominalHz, 60.0);
    EXPECT_THAT(namesOf(plan.mCases), ElementsAre("dip1", "fault", "evolving", "mine"));

    const Case& dip = plan.mCases[0];
    EXPECT_EQ(dip.mSource.mSignal.mSettings.at("percent"), 40.5);
    EXPECT_EQ(dip.mSource.mSignal.mSettings.at("phases"), 1.0);
    EXPECT_EQ(dip.mTimes, 10);
    EXPECT_THAT(dip.mExpected, ElementsAre("rms-half", "events"));

    const Source& fault = plan.mCases[1].mSource;
    EXPECT_EQ(fault.mPath, "/plans/recordings/fault.cfg");
    EXPECT_TRUE(fault.mImport.mMapping.mAssignments[7]);
    EXPECT_EQ(fault.mImport.mMapping.mCountsPerAmpere, 10.0);
    EXPECT_EQ(fault.mImport.mMapping.mSide, importing::TransformerSide::Secondary);
    EXPECT_EQ(fault.mImport.mTiming, importing::LineTiming::Nominal);
    EXPECT_EQ(fault.mImport.mFrom, 0.25);
    EXPECT_EQ(fault.mImport.mBefore, 10U);
    EXPECT_TRUE(fault.mImport.mDoLoop);
    EXPECT_EQ(fault.mEncoding, "windows-1251");

    EXPECT_EQ(plan.mCases[2].mSource.mPath, "/states/evolving.toml");
    EXPECT_TRUE(plan.mCases[2].mSource.mIsAligned);
    EXPECT_EQ(plan.mCases[3].mSource.mPath, "/mine.csv");
    EXPECT_EQ(plan.mCases[3].mSeconds, 720.0);
}

/** The text of a source describes it completely: sources with equal texts give one file. */
TEST(PlanTest, SourcesOfDifferentSettingsHaveDifferentTexts)
{
    const std::string recording = "[[case]]\nrecording = \"a.cfg\"\n";
    std::set<std::string> texts;
    const char* const keys[] = {"",
                                "channels = \"0=UA\"",
                                "scale = [1, 1000]",
                                "scale = [1000, 1]",
                                "side = \"primary\"",
                                "clip = true",
                                "frequency = 50",
                                "frequency = \"track\"",
                                "from = 1",
                                "to = 1",
                                "before = 1",
                                "after = 1",
                                "loop = true",
                                "encoding = \"latin1\""};
    for (const char* key : keys) {
        texts.insert(parsePlan(recording + key, "n.toml").mCases[0].mSource.mText);
    }
    EXPECT_EQ(texts.size(), std::size(keys));
}

TEST(PlanTest, MissingKeysHaveDefaults)
{
    const Plan plan = parsePlan(caseWith(""), "plans/night.toml");
    EXPECT_EQ(plan.mName, "night");
    EXPECT_EQ(plan.mGapNs, 2'000'000'000);
    EXPECT_EQ(plan.mSteady.mSignal.mName, "steady-50hz");
    EXPECT_EQ(plan.mCases[0].mName, "steady-60hz");
    EXPECT_EQ(plan.mCases[0].mTimes, 1);
    EXPECT_FALSE(plan.mCases[0].mSeconds);
}

TEST(PlanTest, MistakeIsReportedWithItsPosition)
{
    const std::string name =
        "expected up to 60 letters, digits, \".\", \"_\" and \"-\", the first a "
        "letter or digit";
    const std::pair<std::string, std::string> rows[] = {
        {"", "1:1: expected cases, each below [[case]]"},
        {"case = 1", "1:8: case: expected [[case]] before each case"},
        {"[[case]", "1:8: Error while parsing table header: encountered end-of-file"},
        {"gap = -0.1\n" + caseWith(""),
         "1:7: gap: expected a number of at least 0 and at most 3600"},
        {"gap = nan\n" + caseWith(""),
         "1:7: gap: expected a number of at least 0 and at most 3600"},
        {"steady = 1\n" + caseWith(""), "1:10: steady: expected a table"},
        {"steady = { file = \"a.csv\", times = 1 }\n" + caseWith(""),
         "1:28: steady.times: unknown key; the nearest is states, and all are signal, recording, "
         "states, file, set, channels, scale, side, clip, frequency, from, to, before, after, "
         "loop, "
         "encoding, align"},
        {"[[case]]\nname = \"a\"",
         "1:1: signal: missing; expected signal, recording, states or file"},
        {caseWith("file = \"a.csv\""), "3:8: file: signal is given, too; expected one of the two"},
        {"[[case]]\nsignal = \"stedy-60hz\"",
         "2:10: signal: 'stedy-60hz': no signal has this name; the nearest are steady-60hz, "
         "steady-50hz, swell-110-50hz; vx-case generate --list shows all"},
        {"[[case]]\nsignal = 1", "2:10: signal: expected text in quotes"},
        {"[[case]]\nfile = \"\"",
         "2:8: file: expected a text without control characters, not empty"},
        {"[[case]]\nfile = \"a\\nb.csv\"",
         "2:8: file: expected a text without control characters, not empty"},
        {caseWith("set = { frequency = 9 }"),
         "3:21: set.frequency: expected a number of at least 10 and at most 400"},
        {caseWith("set = { phases = 1 }"),
         "3:9: set.phases: unknown key; the nearest is seconds, and all are frequency, seconds"},
        {"[[case]]\nsignal = \"dip-70-25-50hz\"\nset.phases = 1.5",
         "3:14: set.phases: expected a whole number of phases, from the first on"},
        {caseWith("before = 1"), "3:10: before: allowed only with recording"},
        {caseWith("times = 0"), "3:9: times: expected a number of at least 1 and at most 100000"},
        {caseWith("times = 1.5"), "3:9: times: expected a whole number"},
        {caseWith("seconds = 0"), "3:11: seconds: expected a number above 0 and at most 604800"},
        {caseWith("seconds = inf"), "3:11: seconds: expected a number above 0 and at most 604800"},
        {caseWith("expect = \"rms\""),
         "3:10: expect: expected a list of names such as [\"dip\", \"swell\"]"},
        {caseWith("expect = [\"thd\", \"phasor\"]"),
         "3:18: expect: 'phasor': no such quantity; the nearest is phasors"},
        {"scale = [1, 0]\n" + caseWith(""),
         "1:13: scale: expected a number above 0 and at most 1e+09"},
        {"nominal = [230, 5]\n" + caseWith(""),
         "1:11: nominal: expected volts, amperes and 50 or 60 Hz such as [230, 5, 50]"},
        {"nominal = [230, 5, 55]\n" + caseWith(""),
         "1:11: nominal: expected volts, amperes and 50 or 60 Hz such as [230, 5, 50]"},
        {caseWith("expect = [\"rms\", \"rms\"]"), "3:18: expect: 'rms' is listed twice"},
        {caseWith("name = \"../a\""), "3:8: name: " + name},
        {caseWith("name = \"" + std::string(61, 'a') + '"'), "3:8: name: " + name},
        {"[[case]]\nfile = \"my file.csv\"",
         "1:1: name: missing, and 'my file' is not a valid name: " + name},
        {"[[case]]\nfile = \".csv\"", "1:1: name: missing, and '' is not a valid name: " + name},
        {caseWith("name = \"steady\""),
         "3:8: name: 'steady' is the signal between the cases; expected another name"},
        {caseWith("times = 60000") + caseWith("name = \"b\"\ntimes = 60000"),
         "4:1: times: more than 100000 plays in total"},
        {caseWith("") + caseWith(""),
         "4:1: name: the case of line 1 is 'steady-60hz', too; expected a unique name"},
        {caseWith("[group.short]"), "3:1: group.short.cases: missing; expected the names of cases"},
        {caseWith("[group.short]\ncases = [\"steady-50hz\"]"),
         "4:10: group.short.cases: 'steady-50hz': no case has this name; the nearest is "
         "steady-60hz"},
    };
    for (const auto& [text, message] : rows) {
        EXPECT_EQ(mistakesOf(text), "night.toml:" + message) << text;
    }
}

TEST(PlanTest, MistakesInAnImportAreReported)
{
    const std::pair<const char*, const char*> rows[] = {
        {"loop = true\nafter = 1", "4:9: after: loop is given, too; expected one of the two"},
        {"channels = \"8=UA\"",
         "3:12: channels: '8=UA': expected CHANNEL=SOURCE[*FACTOR][+...] with each channel from 0 "
         "to 7 once, for example 0=UA,1=17,3=0,7=IA+IB*-0.5"},
        {"scale = 1", "3:9: scale: expected two numbers: counts per volt and per ampere"},
        {"side = \"left\"", "3:8: side: expected \"primary\" or \"secondary\""},
        {"frequency = 0",
         "3:13: frequency: expected \"track\", \"nominal\" or a frequency in Hz that can be "
         "played"},
        {"encoding = \"klingon\"", "3:12: encoding: unknown encoding"},
        {"clip = 1", "3:8: clip: expected true or false"},
        {"before = -1", "3:10: before: expected a number of at least 0 and at most 100000"},
    };
    for (const auto& [keys, message] : rows) {
        EXPECT_EQ(mistakesOf("[[case]]\nrecording = \"a.cfg\"\n" + std::string(keys)),
                  std::string("night.toml:") + message);
    }
}

/** Groups may name a case with a mistake. */
TEST(PlanTest, AllMistakesAreReportedAtOnce)
{
    EXPECT_EQ(mistakesOf("gap = -1\n" + caseWith("times = 0\nseconds = -1") +
                         "[[case]]\nfile = \"a.csv\"\nexpect = 1\n[group.g]\n"
                         "cases = [\"steady-60hz\", \"b\"]"),
              "night.toml:1:7: gap: expected a number of at least 0 and at most 3600\n"
              "night.toml:4:9: times: expected a number of at least 1 and at most 100000\n"
              "night.toml:5:11: seconds: expected a number above 0 and at most 604800\n"
              "night.toml:8:10: expect: expected a list of names such as [\"dip\", \"swell\"]\n"
              "night.toml:10:25: group.g.cases: 'b': no case has this name; the nearest is a");
}

TEST(PlanTest, CasesAreSelectedInTheOrderOfThePlan)
{
    const Plan plan = parsePlan(kWholePlan, "night.toml");
    const auto names = [&plan](const Selection& selection) {
        return namesOf(selected(plan, selection).mCases);
    };
    EXPECT_THAT(names({}), ElementsAre("dip1", "fault", "evolving", "mine"));
    EXPECT_THAT(names({{"mine", "fault", "mine"}, {}}), ElementsAre("fault", "mine"));
    EXPECT_THAT(names({{}, {"nightly"}}), ElementsAre("dip1", "mine"));
    EXPECT_THAT(names({{"evolving"}, {"nightly"}}), ElementsAre("dip1", "evolving", "mine"));
    try {
        selected(plan, {{"dip2"}, {"night"}});
        ADD_FAILURE() << "it has neither";
    } catch (const PlanError& error) {
        EXPECT_STREQ(error.what(),
                     "--only: 'dip2': the plan has no such case; the nearest is dip1\n"
                     "--group: 'night': the plan has no such group; the nearest is nightly");
    }
}

} // namespace
