#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TwoWays.h"

namespace {
using namespace std::string_literals;
using Texts = std::vector<std::string>;

constexpr int kColumns = 13;
constexpr int kFrequencyColumn = 4;

std::string joined(const Texts& fields)
{
    std::string line = fields.front();
    for (size_t i = 1; i < fields.size(); ++i) {
        line += ";" + fields[i];
    }
    return line;
}

Texts split(const std::string& text, char separator)
{
    Texts parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Texts plainFields()
{
    return split("17;0.5;7;2;50;1;-2;3;-4;5;-6;7;-8", ';');
}

/** Numbers and texts at the limits of both ways, for every column; "|" between them. */
const std::string kEdges =
    "|0|-0|+0|00|007|-007|1|-1|+1|--1|-|+| | 1|1 |1 2|\t1|1\r|\r1|1\r2|#|1#|#1|a|/|:|\x7F|\x01"
    "|99999999|100000000|123456789|12345678\xFF|1234567:|1234567/|1/2|1:2|1,5|1'000|1_000|0x10"
    "|2147483647|2147483648|-2147483647|-2147483648|-2147483649|4294967295|4294967296"
    "|00000000004294967295|9999999999999999|99999999999999999|0000000000000000|00000000000000001"
    "|18446744073709551615|18446744073709551616|99999999999999999999999999"
    "|1e3|1.5|1.|.5|.|1..2|1.2.3|-1.5|5e1|5E-1|1e99|1e-99|inf|nan|-inf|INF|49.95|49.950000000000"
    "|0.1|0.000000000000001|0.0000000000000001|123456789012345|1234567890123456|12345678.1234567"
    "|12345678.12345678|999999999999999|0.30000001192092896|16777217|16777217.0|33554435|8388608.5"
    "|340282350000000|\xC3\xA4|\xC2\xA0 1|1\xC2\xA0|\xFF|\xC3|\xEF\xBB\xBF+1|\xD9\xA1|\xEF\xBC\x91"
    "|1\0|\0|"s;

TEST(PlainFieldsTest, ReadsEveryColumnAsTheGeneralWayDoes)
{
    for (int column = 0; column < kColumns; ++column) {
        for (const std::string& edge : split(kEdges, '|')) {
            Texts fields = plainFields();
            fields[static_cast<size_t>(column)] = edge;
            for (const char* ending : {"", "\n", "\r\n", "\r\r\n", ";\n", " \n", "# x\n"}) {
                const std::string bytes = joined(fields) + ending;
                EXPECT_EQ(differenceOfWays(bytes), "") << column << ": " << bytes;
            }
        }
    }
}

TEST(PlainFieldsTest, TakesTheLinesOfRealFiles)
{
    const Texts kLines{joined(plainFields()), joined(plainFields()) + "\r",
                       ";;4294967295;0;49.95;2147483647;-2147483647;0;0;0;0;0;0",
                       "some text;0.000056;0;0;050.0000;00000001;1234567890;9;9;9;9;9;123456789"};
    for (const std::string& line : kLines) {
        int plainLines = 0;
        EXPECT_EQ(differenceOfWays(line + "\n# comment\n\n" + line + "\n" + line, &plainLines), "");
        EXPECT_EQ(plainLines, 2) << line;
    }
}

/** Floats are where two conversions could round differently. */
TEST(PlainFieldsTest, RoundsFrequenciesAsTheGeneralWayDoes)
{
    std::mt19937 random(20240229);
    std::string bytes;
    for (int line = 0; line < 20'000; ++line) {
        Texts fields = plainFields();
        std::string& text = fields[kFrequencyColumn];
        text = std::to_string(random() % 100'000'000);
        if (random() % 4 != 0) {
            const std::string decimals = std::to_string(random()) + std::to_string(random());
            text += "." + decimals.substr(0, 1 + random() % 12);
        }
        bytes += joined(fields) + "\n";
    }
    int plainLines = 0;
    EXPECT_EQ(differenceOfWays(bytes, &plainLines), "");
    EXPECT_GT(plainLines, 10'000);
}

TEST(PlainFieldsTest, ReadsRandomLinesAsTheGeneralWayDoes)
{
    const std::string kAlphabet = "0123456789012345678901234567890;;;;--..+ e#\r\t\xC3\xA4x";
    std::mt19937 random(4711);
    for (int round = 0; round < 20'000; ++round) {
        std::string line = joined(plainFields());
        for (unsigned change = random() % 4; change > 0; --change) {
            const size_t place = random() % line.size();
            const char byte = kAlphabet[random() % kAlphabet.size()];
            line.replace(place, random() % 3, 1 + random() % 2, byte);
        }
        ASSERT_EQ(differenceOfWays(line), "") << "round " << round << ": " << line;
    }
}
} // namespace
