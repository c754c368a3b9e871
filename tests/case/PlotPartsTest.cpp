#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <cmath>

#include "plot/AxisTicks.h"
#include "plot/BarLayout.h"
#include "plot/Envelope.h"
#include "plot/LabelText.h"
#include "plot/PlayedBar.h"

namespace {
std::string labelsOf(const plot::Axis& axis)
{
    std::string labels;
    for (const plot::Tick& tick : axis.mTicks) {
        labels += (labels.empty() ? "" : " ") + tick.mLabel;
    }
    return labels;
}
} // namespace

TEST(AxisTicksTest, HaveTheNumbersThatFit)
{
    EXPECT_EQ(labelsOf(plot::valueAxis(0.0, 10.0, 5.0)), "0 2 4 6 8 10");
    EXPECT_EQ(labelsOf(plot::valueAxis(-1.0, 1.0, 4.0)), "-1 -0.5 0 0.5 1");
    EXPECT_EQ(labelsOf(plot::valueAxis(0.0, 10.1, 5.0)), "0 5 10");
    EXPECT_EQ(labelsOf(plot::valueAxis(3.0, 47.0, 9.0)), "5 10 15 20 25 30 35 40 45");
    EXPECT_EQ(labelsOf(plot::valueAxis(0.0, 9.0e-5, 1.0)), "0");
    // The last of 1000 samples is at 0.999 s; 0.9979 is too far from 1 for a number.
    EXPECT_EQ(labelsOf(plot::timeAxis(0.0, 0.9995, 100.0)),
              "0 0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9 1");
    EXPECT_EQ(labelsOf(plot::timeAxis(0.0, 0.9979, 100.0)),
              "0 0.1 0.2 0.3 0.4 0.5 0.6 0.7 0.8 0.9");
    EXPECT_EQ(plot::timeAxis(0.0, 0.9995, 100.0).mTicks.back().mValue, 0.9995);
    // Numbers of 3 letters and 3 of space, in 36 letters: 6 of them.
    EXPECT_EQ(labelsOf(plot::timeAxis(0.0, 1.0, 36.0)), "0 0.2 0.4 0.6 0.8 1");
    EXPECT_EQ(labelsOf(plot::timeAxis(0.0, 1.0, 12.0)), "0 0.5 1");
}

/** Each column keeps its smallest and largest value, with their x. */
TEST(EnvelopeTest, KeepsTheExtremesOfEachColumn)
{
    const auto textOf = [](const plot::Envelope& envelope, size_t curve) {
        std::string text;
        for (const plot::Point& point : envelope.curve(curve)) {
            text += fmt::format("{:g}:{:g} ", point.mX, point.mY);
        }
        return text;
    };
    plot::Envelope envelope(2, 2);
    for (const double y : {3.0, 1.0, 2.0}) {
        envelope.add(y * 10.0, {y, NAN});
    }
    EXPECT_EQ(textOf(envelope, 0), "30:3 10:1 20:2 ");
    EXPECT_EQ(textOf(envelope, 1), "");

    plot::Envelope longer(2, 2);
    for (int i = 0; i < 16; ++i) {
        longer.add(i, {i == 5   ? -9.0
                       : i == 6 ? 9.0
                                : i % 2 * 0.5,
                       i < 9 ? double(NAN) : double(i)});
    }
    EXPECT_EQ(textOf(longer, 0), "5:-9 6:9 8:0 9:0.5 ");
    EXPECT_EQ(textOf(longer, 1), "9:9 15:15 ");
    longer.add(16, {4.0, 4.0});
    EXPECT_EQ(textOf(longer, 0), "5:-9 6:9 8:0 9:0.5 16:4 ");
    longer.limit(1);
    EXPECT_EQ(textOf(longer, 0), "5:-9 6:9 16:4 ");
    EXPECT_EQ(textOf(longer, 1), "9:9 15:15 16:4 ");
}

TEST(LabelTextTest, IsShortenedInTheMiddle)
{
    EXPECT_EQ(plot::letterCount("U_{L1} Ä"), 5U);
    EXPECT_EQ(plot::letterCount("a_b"), 3U);
    EXPECT_EQ(plot::shortened("abcdefgh", 8), "abcdefgh");
    EXPECT_EQ(plot::shortened("abcdefgh", 7), "abc…fgh");
    EXPECT_EQ(plot::shortened("abcdefgh", 6), "ab…fgh");
    EXPECT_EQ(plot::shortened("abcdefgh", 3), "a…h");
    EXPECT_EQ(plot::shortened("ÄÖÜäöü", 5), "ÄÖ…öü");
    EXPECT_EQ(plot::shortened("Voltage_{L1}", 8), "Vol…e_L1");
    EXPECT_EQ(fmt::format("{}", fmt::join(plot::wrappedIntoLines("ab; cd; ef", 7), "|")),
              "ab; cd;|ef");
    EXPECT_EQ(fmt::format("{}", fmt::join(plot::wrappedIntoLines("ab; cd; ef", 6), "|")),
              "ab;|cd;|ef");
    EXPECT_EQ(fmt::format("{}", fmt::join(plot::wrappedIntoLines("abcdefgh;x", 7), "|")),
              "ab…fgh;|x");
}

/** Six rows of texts at most; a command without a text still has its arrow, from the bar's top. */
TEST(BarLayoutTest, CommandsWithoutRoomKeepTheirArrows)
{
    plot::Picture picture;
    picture.mEnd = 10.0;
    for (int i = 0; i < 9; ++i) {
        picture.mCommands.push_back({0.0, fmt::format("command {}", i)});
    }
    picture.mCommands.push_back({9.99, "late"});
    plot::Layout layout;
    EXPECT_EQ(plot::BarLayout(picture, 100.0, 1100.0, 50.0, layout).add(), 50.0 + 6 * 28.0 + 32.0);
    ASSERT_EQ(layout.mTexts.size(), 7U);
    ASSERT_EQ(layout.mArrows.size(), 10U);
    for (size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(layout.mArrows[i].mX, 100.0);
        EXPECT_EQ(layout.mArrows[i].mTop, i < 6 ? 62.0 + 28.0 * double(i) : 50.0 + 6 * 28.0) << i;
    }
    EXPECT_EQ(layout.mTexts[6].mText, "late");
    EXPECT_EQ(layout.mTexts[6].mAnchor, plot::Anchor::Right);
    EXPECT_EQ(layout.mTexts[6].mY, 62.0);
    EXPECT_NEAR(layout.mArrows[9].mX, 1099.0, 1e-9);

    plot::Layout empty;
    EXPECT_EQ(plot::BarLayout(plot::Picture(), 0.0, 9.0, 50.0, empty).add(), 50.0);
}

/** Playing without a gap is one part; times count from the first stamp. */
TEST(PlayedBarTest, JoinsEqualParts)
{
    plot::PlayedBar bar(5'000'000'000);
    const auto add = [&bar](const char* file, std::vector<int> numbers, qint64 from, qint64 to) {
        bar.add(explain::PlayedSegment{std::move(numbers), file, 360, 1, 0, 359,
                                       from * 1'000'000'000, to * 1'000'000'000, 360});
    };
    add("a/steady.csv", {0}, 5, 6);
    add("b/steady.csv", {0, 1}, 6, 8);
    add("sag.x.csv", {1}, 8, 9);
    add("steady.csv", {}, 9, 10);
    ASSERT_EQ(bar.parts().size(), 3U);
    EXPECT_EQ(bar.parts()[0].mText, "0: steady");
    EXPECT_EQ(bar.parts()[0].mFrom, 0.0);
    EXPECT_EQ(bar.parts()[0].mTo, 3.0);
    EXPECT_EQ(bar.parts()[1].mText, "1: sag.x");
    EXPECT_EQ(bar.parts()[2].mFrom, 4.0);
    const std::pair<explain::CommandOutcome, const char*> commands[] = {
        {{"s2", 6'500'000'000, "", {}, 0}, "command “s2”: play configuration 2 once"},
        {{"2", 6'500'000'000, "", {}, 0}, "command “2”: play configuration 2 from now on"},
        {{"x", 6'500'000'000, "no number", {}, 0}, "command “x”: rejected"},
        {{"", 6'500'000'000, "", {}, 0}, "command “”: play configuration  from now on"}};
    for (const auto& [outcome, text] : commands) {
        bar.add(outcome);
        EXPECT_EQ(bar.commands().back().mText, text);
        EXPECT_EQ(bar.commands().back().mSeconds, 1.5);
    }
}
