#include <gtest/gtest.h>

#include "textfile/DigitGroups.h"
#include "textfile/TimeColumn.h"

namespace {
using Columns = std::vector<textfile::TextLayout::Column>;
using Rows = std::vector<std::vector<std::optional<double>>>;
} // namespace

TEST(TimeColumnTest, KnowsUnitsAndNames)
{
    const std::pair<const char*, double> units[] = {
        {"s", 1.0},   {"Sec", 1.0}, {"ms", 1e-3},  {"MSEC", 1e-3},   {"us", 1e-6},   {"µs", 1e-6},
        {"μs", 1e-6}, {"ns", 1e-9}, {"min", 60.0}, {"Seconds", 1.0}, {"second", 1.0}};
    for (const auto& [unit, seconds] : units) {
        EXPECT_EQ(textfile::secondsInUnit(unit), seconds) << unit;
    }
    for (const char* const unit : {"", "V", "h", "m", "sm", "ks"}) {
        EXPECT_FALSE(textfile::secondsInUnit(unit)) << unit;
    }
    for (const char* const name :
         {"t", "Time", "Zeit", "sample TIME", "Time(abs)", "time_1", "rel.time", "Время"}) {
        EXPECT_TRUE(textfile::isTimeName(name)) << name;
    }
    for (const char* const name : {"T", "", "U1", "overtime", "timer", "Zeiten", "t1"}) {
        EXPECT_FALSE(textfile::isTimeName(name)) << name;
    }
}

TEST(TimeColumnTest, SplitsTheUnitFromTheName)
{
    const struct
    {
        textfile::TextLayout::Column mColumn;
        bool mIsFirst;
        textfile::TextLayout::Column mExpected;
    } rows[] = {
        {{"time_ms", ""}, false, {"time", "ms"}},
        {{"Time ms", ""}, false, {"Time", "ms"}},
        {{"x_ms", ""}, true, {"x", "ms"}},
        {{"x_ms", ""}, false, {"x_ms", ""}},
        {{"time_ms", "V"}, true, {"time_ms", "V"}},
        {{"time_V", ""}, true, {"time_V", ""}},
        {{"time_", ""}, true, {"time_", ""}},
        {{"ms", ""}, true, {"ms", ""}},
        {{"sample time_us", ""}, false, {"sample time", "us"}},
    };
    for (const auto& row : rows) {
        textfile::TextLayout::Column column = row.mColumn;
        textfile::splitTimeName(&column, row.mIsFirst);
        EXPECT_EQ(column.mName, row.mExpected.mName);
        EXPECT_EQ(column.mUnit, row.mExpected.mUnit) << row.mColumn.mName;
    }
}

/** A name has priority over a unit, and a unit over being the first; the second column falls. */
TEST(TimeColumnTest, FindsTheColumnThatIsTheTime)
{
    constexpr size_t kNone = 99;
    const Rows rising = {{0.0, 3.0, 0.0}, {1.0, 2.0, 2.0}, {2.0, 1.0, 4.0}};
    const Rows falling = {{2.0, 3.0, 4.0}, {1.0, 3.0, 2.0}, {0.0, 3.0, 0.0}};
    const struct
    {
        Columns mColumns;
        Rows mRows;
        size_t mExpected;
        const char* mReason;
    } rows[] = {
        {{{"a", ""}, {"b", "V"}, {"time", "s"}}, rising, 2, ""},
        {{{"a", ""}, {"time", ""}, {"time", ""}}, rising, 2, ""}, // the other does not rise
        {{{"time", ""}, {"b", "V"}, {"time", "s"}}, rising, 2, ""},
        {{{"time", "s"}, {"b", "V"}, {"time", "s"}}, rising, 0, ""},
        {{{"a", "V"}, {"b", "s"}, {"c", "ms"}}, rising, 2, ""},
        {{{"a", ""}, {"b", "V"}, {"c", "V"}}, rising, 0, ""},
        {{{"a", ""}, {"b", "V"}, {"c", "V"}}, {{0.0, 1.0, 2.0}}, 0, ""},
        {{{"a", "V"}, {"b", "V"}, {"c", "V"}},
         rising,
         kNone,
         "none of its columns is a time: expected one that rises, with a heading like \"t (s)\""},
        {{{"a", ""}, {"b", "V"}, {"c", "V"}},
         falling,
         kNone,
         "none of its columns is a time: expected one that rises, with a heading like \"t (s)\""},
        {{{"a", ""}, {"b", "s"}, {"time", "V"}},
         rising,
         kNone,
         "its time column \"time\" has the unit \"V\": expected a unit of time"},
        {{{"a", ""}, {"Time", "s"}, {"c", "s"}},
         rising,
         kNone,
         "its time column \"Time\" does not rise"},
    };
    for (const auto& row : rows) {
        std::string reason;
        EXPECT_EQ(textfile::findTimeColumn(row.mColumns, row.mRows, &reason).value_or(kNone),
                  row.mExpected)
            << row.mReason;
        EXPECT_EQ(reason, row.mReason);
    }
}

/** One number that cannot be grouped shows that the sign is decimal. */
TEST(DigitGroupsTest, DistinguishesThousandsFromDecimals)
{
    const struct
    {
        std::vector<const char*> mFields; ///< each in the next of two columns
        const char* mExpected;            ///< the grouped field; empty where the sign is decimal
    } rows[] = {
        {{"1,234", "5", "999", "-7"}, "1,234"},
        {{"1,234", "5", "-21,000", "-7"}, ""}, // no whole number in the column
        {{"5", "1", "7", "+12,345", "8", "9"}, "+12,345"},
        {{"1,234", "5", "999", "0,5"}, ""},
        {{"1,234", "5", "999", "0,123"}, ""},
        {{"1,234", "5", "999", "1,25"}, ""},
        {{"1,234", "5", "999", "1,2345"}, ""},
        {{"1,234", "5", "999", "1000"}, ""},
        {{"1,234", "5", "999", ",123"}, ""},
        {{"1,234", "5", "999", "1234,567"}, ""},
        {{"1,234", "5", "999", "1,2e4"}, ""},
        {{"1", "2,345", "6,789", "4"}, "2,345"}, // that of the first line
        {{"1", "2", "3", "4"}, ""},
    };
    for (const auto& row : rows) {
        textfile::DigitGroups groups(',', 2);
        for (size_t i = 0; i < row.mFields.size(); ++i) {
            groups.add(row.mFields[i], i % 2, 10 + i / 2);
        }
        const auto found = groups.firstGrouped();
        EXPECT_EQ(found ? found->mText : "", row.mExpected) << row.mFields.back();
    }
}
