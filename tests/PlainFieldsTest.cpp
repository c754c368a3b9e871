#include <gtest/gtest.h>

#include <string>

#include "Files.h"
#include "SeededRandom.h"
#include "TwoWays.h"

namespace {
using namespace std::string_literals;

constexpr size_t kFrequencyColumn = 4;

const Words kFields = split("17;0.5;7;2;50;1;-2;3;-4;5;-6;7;-8", ';');

/** A line of plain fields with another text in one column. */
std::string lineWithField(size_t column, const std::string& text)
{
    std::string line;
    for (size_t i = 0; i < kFields.size(); ++i) {
        line += (i == 0 ? "" : ";") + (i == column ? text : kFields[i]);
    }
    return line;
}

/** All in one file; if that differs, each line alone shows which one it is. */
void expectNoDifference(const Words& lines)
{
    std::string bytes;
    for (const std::string& line : lines) {
        bytes += line;
    }
    int plainLines = 0;
    const std::string difference = differenceOfWays(bytes, &plainLines);
    EXPECT_EQ(difference, "");
    EXPECT_GT(plainLines, 500) << "taken the fast way";
    for (size_t i = 0; !difference.empty() && i < lines.size(); ++i) {
        EXPECT_EQ(differenceOfWays(lines[i]), "") << testing::PrintToString(lines[i]);
    }
}

/** Numbers and texts at the limits of both paths, for every column, separated by "|". */
const std::string kEdges =
    "|0|-0|+0|00|007|-007|1|-1|+1|--1|-|+| | 1|1 |1 2|\t1|1\r|\r1|1\r2|#|1#|#1|a|/|:|\x7F|\x01"
    "|99999999|100000000|123456789|12345678\xFF|1234567:|1234567/|1/2|1:2|1,5|1'000|1_000|0x10"
    "|2147483647|2147483648|-2147483647|-2147483648|-2147483649|4294967295|4294967296"
    "|00000000004294967295|9999999999999999|99999999999999999|0000000000000000|00000000000000001"
    "|18446744073709551615|18446744073709551616|99999999999999999999999999"
    "|1e3|1.5|1.|.5|.|1..2|1.2.3|-1.5|5e1|5E-1|1e99|1e-99|inf|nan|-inf|INF|49.95|49.950000000000"
    "|0.1|0.000000000000001|0.0000000000000001|123456789012345|1234567890123456|12345678.1234567"
    "|12345678.12345678|999999999999999|0.30000001192092896|16777217|16777217.0|33554435|8388608.5"
    "|340282350000000|9007200.500000001|\xC3\xA4|\xC2\xA0 "
    "1|1\xC2\xA0|\xFF|\xC3|\xEF\xBB\xBF+1|\xD9\xA1|\xEF\xBC\x91"
    "|1\0|\0|"s;

TEST(PlainFieldsTest, ReadsEveryColumnLikeTheGeneralPath)
{
    Words lines;
    for (size_t column = 0; column < kFields.size(); ++column) {
        for (const std::string& edge : split(kEdges, '|')) {
            for (const char* ending : {"\n", "\r\n", "\r\r\n", ";\n", " \n", "# x\n"}) {
                lines.push_back(lineWithField(column, edge) + ending);
            }
        }
    }
    expectNoDifference(lines);
}

TEST(PlainFieldsTest, TakesTheLinesOfRealFiles)
{
    for (const std::string& line :
         {lineWithField(0, "17"), lineWithField(0, "17") + "\r",
          ";;4294967295;0;49.95;2147483647;-2147483647;0;0;0;0;0;0"s,
          "some text;0.000056;0;0;050.0000;00000001;1234567890;9;9;9;9;9;123456789"s}) {
        int plainLines = 0;
        EXPECT_EQ(differenceOfWays(line + "\n# comment\n\n" + line + "\n" + line, &plainLines), "");
        EXPECT_EQ(plainLines, 2) << line;
    }
}

/** Two conversions of floats could round differently. */
TEST(PlainFieldsTest, RoundsFrequenciesLikeTheGeneralPath)
{
    std::mt19937 random = seededRandom();
    Words lines;
    for (int line = 0; line < 5000; ++line) {
        const std::string decimals = std::to_string(random()) + std::to_string(random());
        lines.push_back(lineWithField(kFrequencyColumn, std::to_string(random() % 100'000'000) +
                                                            "." +
                                                            decimals.substr(0, 1 + random() % 12)) +
                        "\n");
    }
    expectNoDifference(lines);
}
} // namespace
