#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "Files.h"
#include "check/CaseCheck.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
/** A directory with value files; configurations have their full paths. */
class CheckTest : public testing::Test
{
protected:
    CheckTest() { configuration::CaseConfiguration::keepLogSilent(); }

    /** A sine of amplitude 1000 in all channels, its first sample at 0 degrees, in line 2. */
    void makeWave(
        const std::string& name, int samples,
        const std::function<double(int)>& frequencyOf = [](int) { return 50; })
    {
        std::string text = "# wave\n";
        for (int sample = 0; sample < samples; ++sample) {
            text += ";;0;0;" + std::to_string(frequencyOf(sample));
            const auto value = std::lround(1000 * std::sin(sample * std::acos(-1.0) / 180));
            text += repeated(";" + std::to_string(value), kChannelCount) + "\n";
        }
        mFiles.make(name, text);
    }

    /** In the configuration "@" is the directory; in the findings it is also the file. */
    check::CaseCheck check(const std::string& configuration)
    {
        return check::CaseCheck(mFiles.make("conf", replaced(configuration, "@", mFiles.path(""))));
    }

    std::vector<std::string> shortened(const std::vector<std::string>& findings) const
    {
        std::vector<std::string> texts;
        for (const std::string& finding : findings) {
            texts.push_back(replaced(finding, mFiles.path(""), ""));
        }
        return texts;
    }

    static std::string replaced(const std::string& text, const char* what, const std::string& by)
    {
        return QString::fromStdString(text).replace(what, by.c_str()).toStdString();
    }
    static std::string replaced(const std::string& text, const std::string& what, const char* by)
    {
        return replaced(text, what.c_str(), std::string(by));
    }

    TestFiles mFiles;
};
} // namespace

TEST_F(CheckTest, FindsAllErrorsInOneRun)
{
    makeWave("good", 360);
    makeWave("still", 720, [](int sample) { return sample < 360 ? 50 : 5e6; });
    mFiles.make("bad", "\n;;0;0;50,1;1;2;3;4;5;6;7;8\n;;0;0;50;1;2;3;4;5;6;7;8\n1;2\n");
    mFiles.make("worse", repeated("x\n", 2500));
    const check::CaseCheck result = check(
        "0,1,@good\n1,1,@gone\nx,1,@good\n1,1,@bad\n2,1,@still\n4,1\n4,1,@bad\n-3,9,\n5,1,@"
        "worse\n");
    const std::vector<std::string> errors = shortened(result.errors());
    ASSERT_EQ(errors.size(), 8U + 21U);
    EXPECT_EQ(result.errorCount(), 8 + 2500);
    const std::string wrongCount = ": Wrong number of parameter. Expected: ";
    EXPECT_THAT(
        std::vector<std::string>(errors.begin(), errors.begin() + 10),
        ElementsAre(
            "conf:3: First parameter (x) is not of type quint32",
            "conf:6" + wrongCount + "3, found 2: 4,1",
            "conf:7: no configuration found. Number 3 is missing: the numbers run from 0 on "
            "without a gap, and line 7 gives 4",
            "conf:8: configuration 9 is played continuously from the start, and there is "
            "none",
            "conf:2: could not open file: gone (openFileInternal() : Das I/O-Device 'gone' "
            "existiert nicht.)",
            "bad:2: Parameter (50,1) is not of type float",
            "bad:4" + wrongCount + "13, found 2: 1;2",
            "still:362: frequency of 5e+06 Hz cannot be played (step of 0 ns or of a second "
            "and more)",
            "worse:1" + wrongCount + "13, found 1: x", "worse:2" + wrongCount + "13, found 1: x"));
    EXPECT_EQ(errors.back(), "worse: and 2480 more such lines, 2500 in all");
}

TEST_F(CheckTest, WarnsOfProbableMistakes)
{
    makeWave("whole", 360);
    makeWave("part", 90);
    makeWave("inside", 720, [](int sample) { return sample < 400 ? 50 : 60; });
    makeWave("long", 3600, [](int) { return 1; });
    makeWave("no number", 360, [](int) { return std::nan(""); });
    mFiles.make("empty", "# nothing\n");
    EXPECT_THAT(shortened(check("0,3,@whole\n1,1,@empty\n2,0,@whole\n3,1,@inside\n"
                                "4,1,@no number\n")
                              .warnings()),
                ElementsAre("conf: configuration 1 has no samples to play",
                            "conf:3: 0 repetitions, so it is never played",
                            "conf: configuration 2 has no samples to play",
                            "inside:402: the frequency changes to 60 Hz inside a block of 360 "
                            "samples, where it has no effect (320 samples of the file are so)"));
    const std::string jump = ": channel 0 jumps by 1000 from the end of part to the beginning of ";
    EXPECT_THAT(shortened(check("0,2,@part\n0,1,@whole\n1,1,@long\n").warnings()),
                ElementsAre("conf:1" + jump + "part, and by at most 18 inside them",
                            "conf:1" + jump + "whole, and by at most 18 inside them",
                            "long: plays for 10.0 s, and a command waits until its end"));
}

TEST_F(CheckTest, ReportsWhatIsPlayed)
{
    makeWave("a", 720, [](int sample) { return sample < 360 ? 50 : 60; });
    makeWave("b", 360);
    const check::CaseCheck result = check("0,2,@a\n0,1,@b\n0,0,@b\n1,1,@b\n-1,1,\n");
    EXPECT_THAT(result.errors(), IsEmpty());
    ASSERT_EQ(result.configurations().size(), 2U);
    const check::CheckedConfiguration& first = result.configurations().front();
    EXPECT_EQ(first.mEntries, 3);
    EXPECT_EQ(first.mSamples, 2 * 720 + 360);
    EXPECT_NEAR(first.mSeconds, 360e-9 * (3 * 55'555 + 2 * 46'296), 1e-12);
    EXPECT_EQ(first.mLowestHz, 50);
    EXPECT_EQ(first.mHighestHz, 60);
    EXPECT_FALSE(first.mIsContinuous);
    EXPECT_TRUE(result.configurations().back().mIsContinuous);
    EXPECT_EQ(result.bytesOn32Bits(), (720 + 3 * 360) * 56);
    EXPECT_EQ(result.bytesHere(), (720 + 3 * 360) * qint64{sizeof(InputValueItem)});
    EXPECT_THAT(check::CaseCheck("/no/such").errors(),
                ElementsAre("/no/such: No such file or directory"));
}

/** Jumps are possible where one file follows another, and where a file follows itself. */
TEST_F(CheckTest, JumpsAreFoundWhereTheyArePlayed)
{
    makeWave("part", 90);
    makeWave("whole", 360);
    const std::string end = ", and by at most 18 inside them";
    const std::string ofPart =
        ": channel 0 jumps by 1000 from the end of part to the beginning of ";
    const struct
    {
        const char* mConfiguration;
        std::vector<std::string> mSeams;
    } rows[] = {{"0,1,@part\n0,1,@whole\n", {"whole"}},
                {"0,1,@whole\n0,1,@part\n", {"whole"}},
                {"0,2,@part\n0,1,@whole\n", {"part", "whole"}},
                {"0,1,@part\n", {"part"}},
                {"0,2,@part\n", {"part"}},
                {"0,1,@whole\n0,3,@whole\n", {}}};
    for (const auto& row : rows) {
        std::vector<std::string> found;
        for (const std::string& warning : shortened(check(row.mConfiguration).warnings())) {
            const size_t begin = warning.find(ofPart);
            ASSERT_NE(begin, std::string::npos) << warning;
            const size_t name = begin + ofPart.size();
            found.push_back(warning.substr(name, warning.size() - end.size() - name));
        }
        EXPECT_EQ(found, row.mSeams) << row.mConfiguration;
    }
}
