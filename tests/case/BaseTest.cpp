#include <gmock/gmock.h>

#include "Files.h"
#include "ReadSignal.h"
#include "base/InputFile.h"
#include "base/Numbers.h"
#include "base/RaisedCosine.h"
#include "base/Remarks.h"
#include "base/Sums.h"
#include "base/TextEncoding.h"
#include "base/TextTable.h"

using testing::ElementsAre;

/** Lines are complete wherever the blocks of the file end, and an endless line is refused. */
TEST(BaseTest, LinesOfAFile)
{
    const TestFiles files;
    const std::string longLine(700'000, 'x');
    const std::string name =
        files.make("f", "a\r\n\n" + longLine + "\n" + longLine + "\nlast").toStdString();
    base::InputFile file(name);
    std::vector<std::string> lines;
    std::string_view line;
    while (file.takeLine(&line)) {
        lines.emplace_back(line);
    }
    EXPECT_TRUE((lines == std::vector<std::string>{"a", "", longLine, longLine, "last"}));
    EXPECT_EQ(file.progress(), 1.0);
    EXPECT_EQ(file.left(), 0U);
    file.setPart(4, 14);
    EXPECT_EQ(file.peek(99), "xxxxxxxxxx");
    file.skip(3);
    EXPECT_EQ(file.position(), 7U);
    EXPECT_TRUE(file.takeLine(&line));
    EXPECT_EQ(line, "xxxxxxx") << "the part ends before its line";
    const std::string endless =
        files.make("g", "ab\n" + std::string((1U << 20U) + 1, 'x')).toStdString();
    base::InputFile other(endless);
    EXPECT_TRUE(other.takeLine(&line));
    EXPECT_EQ(errorOf([&] { other.takeLine(&line); }),
              endless + ": byte 3: expected a line end within 1 MiB");
    EXPECT_EQ(errorOf([] { base::InputFile("/tmp"); }), "/tmp: expected a regular file");
}

TEST(BaseTest, NumbersAndFields)
{
    const struct
    {
        const char* mText;
        bool mIsNumber;
        double mValue;
    } rows[] = {
        {" 1.5\t", true, 1.5}, {"+2e3", true, 2000.0}, {"-0.25", true, -0.25},
        {"", false, 0.0},      {"1,5", false, 0.0},    {"1 2", false, 0.0},
        {"+-1", false, 0.0},   {"+", false, 0.0},      {"0x10", false, 0.0},
        {"nan", false, 0.0},   {"inf", false, 0.0},    {"1e999", false, 0.0},
    };
    for (const auto& row : rows) {
        double value = 0.0;
        EXPECT_EQ(base::parseNumber(row.mText, &value), row.mIsNumber) << row.mText;
        EXPECT_EQ(value, row.mValue) << row.mText;
    }
    int whole = 7;
    EXPECT_FALSE(base::parseNumber("1.5", &whole));
    EXPECT_FALSE(base::parseNumber("3000000000", &whole));
    EXPECT_EQ(whole, 7);
    EXPECT_THAT(base::splitFields(" a, b c ,,\r", ','), ElementsAre("a", "b c", "", ""));
    EXPECT_EQ(base::decodeText("\xEF\xBB\xBFL\xC3\xA4rm", "").mText, "L\xC3\xA4rm");
    EXPECT_EQ(base::decodeText("L\xE4rm", "").mText, "L\xC3\xA4rm");
    EXPECT_TRUE(base::decodeText("L\xE4rm", "").mIsGuessed);
    EXPECT_EQ(base::decodeText("\xC0", "windows-1251").mText, "\xD0\x90");
}

/** The number of remarks is limited, and the number of channels in one, too. */
TEST(BaseTest, RemarksAreFewAndTablesAligned)
{
    base::Remarks remarks;
    for (int i = 0; i < 1000; ++i) {
        remarks.add("odd " + std::to_string(i));
        remarks.addFor("silent", i);
    }
    const std::vector<std::string> texts = remarks.take();
    ASSERT_EQ(texts.size(), 101U);
    EXPECT_EQ(texts[99], "odd 99");
    EXPECT_EQ(texts[100], "and more like this");
    EXPECT_THAT(remarks.take(), ElementsAre());
    for (int i = 1; i <= 10; ++i) {
        remarks.addFor("silent", i);
    }
    remarks.addFor("loud", 3);
    EXPECT_THAT(remarks.take(), ElementsAre("channel 3: loud",
                                            "channels 1, 2, 3, 4, 5, 6, 7, 8 and 2 more: silent"));

    base::TextTable table({"name", ">rms"});
    table.add({"\xC3\x9C", "1"});
    table.add({"U", "10000"});
    EXPECT_EQ(table.text(), "name    rms\n\xC3\x9C         1\nU     10000\n");
}

/** The window rejects a constant and all harmonics; overlapping windows add up to 1. */
TEST(BaseTest, RaisedCosineSeesTheFundamentalAlone)
{
    constexpr int kSamples = 360;
    for (int harmonic = 0; harmonic < 20; ++harmonic) {
        std::complex<double> sum;
        for (int i = 0; i < 2 * kSamples; ++i) {
            const double phase = double(i % kSamples) / kSamples;
            const base::WindowWeights weights = base::windowWeights(phase);
            const double value = std::cos(base::kTwoPi * harmonic * phase);
            sum += value * (i < kSamples ? weights.mRising : weights.mFalling);
            EXPECT_NEAR(std::abs(weights.mRising + weights.mFalling), 1.0, 1e-15);
            EXPECT_NEAR(std::abs(weights.mRising), base::raisedCosine(phase - 1.0), 1e-15);
        }
        EXPECT_NEAR(std::abs(sum) / kSamples, harmonic == 1 ? 0.5 : 0.0, 1e-12) << harmonic;
    }
    const std::vector<double> values{3.0, -4.0, 0.0, 0.0, 5.0};
    EXPECT_DOUBLE_EQ(base::rootMeanSquare(values), std::sqrt(10.0));
    EXPECT_EQ(base::rootMeanSquare({}), 0.0);
}
