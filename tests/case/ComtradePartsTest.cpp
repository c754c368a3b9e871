#include <fmt/format.h>
#include <gtest/gtest.h>

#include "comtrade/ComtradeTime.h"
#include "comtrade/StatusTracker.h"

/** Each way of writing a date; invalid dates are refused and not guessed. */
TEST(ComtradeTimeTest, ReadsDatesAndTimes)
{
    const struct
    {
        const char* mDate;
        const char* mTime;
        bool mMonthFirst;
        const char* mExpected; ///< the time, "swapped" and the digits; empty for none
    } rows[] = {
        {"01/02/2020", "03:04:05.000006", false, "2020-02-01 03:04:05.000006 6"},
        {"01/02/2020", "03:04:05.000006", true, "2020-01-02 03:04:05.000006 6"},
        {" 1-2-2020 ", " 3:4:5 ", false, "2020-02-01 03:04:05 0"},
        {"2020-02-29", "00:00:00.123456789", false, "2020-02-29 00:00:00.123456789 9"},
        {"2021-02-29", "00:00:00", false, ""},
        {"12/13/2020", "00:00:00", false, "2020-12-13 00:00:00 swapped 0"},
        {"13/12/2020", "00:00:00", true, "2020-12-13 00:00:00 swapped 0"},
        {"12/12/2020", "00:00:00", false, "2020-12-12 00:00:00 0"},
        {"13/13/2020", "00:00:00", false, ""},
        {"31.12.69", "23:59:59", false, "2069-12-31 23:59:59 0"},
        {"01.01.70", "23:59:59", false, "1970-01-01 23:59:59 0"},
        {"01.01.99", "23:59:59", false, "1999-01-01 23:59:59 0"},
        {"31/12/2016", "23:59:60", false, "2016-12-31 23:59:60 0"},
        {"31/12/2016", "23:59:61", false, ""},
        {"31/12/2016", "23:60:00", false, ""},
        {"31/12/2016", "24:00:00", false, ""},
        {"31/12/2016", "23:59", false, ""},
        {"31/12/2016", "23:59:59.1a", false, ""},
        {"31/12/2016", "23:59:59.", false, "2016-12-31 23:59:59. 0"},
        {"31/12", "00:00:00", false, ""},
        {"", "00:00:00", false, ""},
        {"31/12/2016", "", false, ""},
    };
    for (const auto& row : rows) {
        const auto time = comtrade::parseComtradeTime(row.mDate, row.mTime, row.mMonthFirst);
        EXPECT_EQ(
            time ? fmt::format("{} {}{}", time->mText, time->mHasSwappedDayMonth ? "swapped " : "",
                               time->mFractionDigits)
                 : "",
            row.mExpected)
            << row.mDate << ' ' << row.mTime;
    }
}

/**
 * Changes of status channels in two words and two blocks; bits behind the last channel are ignored.
 */
TEST(StatusTrackerTest, KeepsChangesInOrder)
{
    std::vector<waveform::StatusChannel> channels(18);
    comtrade::StatusTracker tracker(&channels);
    comtrade::ComtradeBlock block;
    block.mNumbers = block.mStamps = {1, 2};
    block.mStates = {0x0001, 0xFFFC, 0x8001, 0xFFFE}; // 17 and 15 rise
    tracker.add(block, {0.0, 1.0});
    block.mStates = {0x8000, 0x0002, 0x8000, 0x0000}; // 0 falls, then 17
    tracker.add(block, {2.0, 3.0});

    const auto textOf = [&channels](size_t channel) {
        std::string text = fmt::format("{}", channels[channel].mFirstState ? 1 : 0);
        for (const auto& [seconds, state] : channels[channel].mChanges) {
            text += fmt::format(" {:g}:{}", seconds, state ? 1 : 0);
        }
        EXPECT_EQ(channels[channel].mChangeCount, channels[channel].mChanges.size());
        return text;
    };
    EXPECT_EQ(textOf(0), "1 2:0");
    EXPECT_EQ(textOf(1), "0");
    EXPECT_EQ(textOf(15), "0 1:1");
    EXPECT_EQ(textOf(16), "0");
    EXPECT_EQ(textOf(17), "0 1:1 3:0");
}
