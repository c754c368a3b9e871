#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "SeededRandom.h"
#include "plot/GnuplotScript.h"
#include "plot/LabelText.h"
#include "plot/Layout.h"

using testing::HasSubstr;

namespace {

/**
 * Pictures with everything that makes a layout hard: long texts, large and small numbers, many
 * commands.
 */
class RandomPicture
{
public:
    explicit RandomPicture(std::mt19937& random) : mRandom(random) {}

    plot::Picture make()
    {
        plot::Picture picture;
        picture.mTitle = text(200);
        picture.mCaption = text(100) + "; " + text(400) + "; " + text(20);
        picture.mBegin = number(0, 1) * -0.0599994;
        picture.mEnd = std::pow(10.0, number(-2, 4));
        for (int i = number(1, 5); i > 0; --i) {
            picture.mWhole.push_back(panel(i == 1));
        }
        const bool isSquare = number(0, 1) == 0;
        for (int i = number(0, 3); i > 0; --i) {
            picture.mColumns.push_back(
                {text(80), 0.0, 0.0, std::nullopt, {panel(false)}, isSquare});
            picture.mColumns.back().mFrom = picture.mEnd * number(0, 1000) / 1001.0;
            picture.mColumns.back().mTo =
                picture.mColumns.back().mFrom + std::pow(10.0, number(-5, 0));
        }
        if (!picture.mColumns.empty() && number(0, 2) == 0) {
            picture.mWhole.clear();
        }
        for (int i = number(0, 40); i > 0; --i) {
            picture.mCommands.push_back({picture.mEnd * number(0, 1000) / 1000.0, text(300)});
            picture.mPlayed.push_back({picture.mEnd * (i - 1.0) / 40.0, picture.mEnd * i / 40.0,
                                       number(0, 255), text(9)});
        }
        return picture;
    }

private:
    int number(int min, int max) { return std::uniform_int_distribution(min, max)(mRandom); }

    std::string text(int max)
    {
        return std::string(static_cast<size_t>(number(1, max)), 'x') +
               (number(0, 1) == 0 ? "_{Ä1}" : "…");
    }

    plot::Panel panel(bool isFrequency)
    {
        const double high = number(1, 999) * std::pow(10.0, number(-9, 9));
        plot::Panel panel{text(30), -high * number(0, 1), high, {}, isFrequency};
        for (int i = number(1, 4); i > 0; --i) {
            panel.mCurves.push_back({text(12), 0, i == 4, {}});
        }
        return panel;
    }

    std::mt19937& mRandom;
};

std::vector<plot::Box> boxesOf(const plot::Layout& layout)
{
    std::vector<plot::Box> boxes;
    const auto isInBar = [&](const plot::Box& box) {
        return std::any_of(layout.mBar.begin(), layout.mBar.end(), [&](const plot::BarPart& part) {
            return part.mBox.mLeft <= box.mLeft && box.mRight <= part.mBox.mRight &&
                   part.mBox.mTop <= box.mTop && box.mBottom <= part.mBox.mBottom;
        });
    };
    for (const plot::LaidText& text : layout.mTexts) {
        if (!isInBar(boxOf(text))) {
            boxes.push_back(boxOf(text));
        }
    }
    for (const plot::KeyLine& line : layout.mKey) {
        boxes.push_back(line.mBox);
    }
    for (const plot::BarPart& part : layout.mBar) {
        boxes.push_back(part.mBox);
    }
    for (const plot::LaidPanel& panel : layout.mPanels) {
        boxes.push_back(panel.mArea);
    }
    return boxes;
}

bool overlap(const plot::Box& a, const plot::Box& b)
{
    constexpr double kTouching = 1e-6;
    return a.mLeft < b.mRight - kTouching && b.mLeft < a.mRight - kTouching &&
           a.mTop < b.mBottom - kTouching && b.mTop < a.mBottom - kTouching;
}

std::string describe(const plot::Box& box)
{
    return fmt::format("{:.1f},{:.1f} to {:.1f},{:.1f}", box.mLeft, box.mTop, box.mRight,
                       box.mBottom);
}

void expectGoodAxis(const plot::Axis& axis)
{
    ASSERT_FALSE(axis.mTicks.empty());
    double last = -INFINITY;
    for (const plot::Tick& tick : axis.mTicks) {
        EXPECT_GT(tick.mValue, last);
        EXPECT_GE(tick.mValue, axis.mLow);
        EXPECT_LE(tick.mValue, axis.mHigh);
        EXPECT_NEAR(std::stod(tick.mLabel), tick.mValue, (axis.mHigh - axis.mLow) * 0.02);
        last = tick.mValue;
    }
}
} // namespace

/** Nothing overlaps, everything is inside the picture, and the ticks have correct positions. */
TEST(PlotLayoutTest, NothingOverlaps)
{
    std::mt19937 random = seededRandom();
    RandomPicture pictures(random);
    for (int run = 0; run < 300; ++run) {
        const plot::Picture picture = pictures.make();
        const plot::Layout layout = layOut(picture);
        const std::vector<plot::Box> boxes = boxesOf(layout);
        for (size_t i = 0; i < boxes.size(); ++i) {
            EXPECT_GE(boxes[i].mLeft, 0.0) << describe(boxes[i]);
            EXPECT_GE(boxes[i].mTop, 0.0) << describe(boxes[i]);
            EXPECT_LE(boxes[i].mRight, plot::kLayoutWidth + 1e-6) << describe(boxes[i]);
            EXPECT_LE(boxes[i].mBottom, layout.mHeight) << describe(boxes[i]);
            for (size_t j = 0; j < i; ++j) {
                ASSERT_FALSE(overlap(boxes[i], boxes[j]))
                    << describe(boxes[i]) << " and " << describe(boxes[j]);
            }
        }
        for (const plot::LaidPanel& panel : layout.mPanels) {
            EXPECT_GT(panel.mArea.width(), 100.0);
            expectGoodAxis(panel.mTime);
            expectGoodAxis(panel.mValues);
        }
    }
}

/** Texts that fit are complete; a command's text is beside its arrow. */
TEST(PlotLayoutTest, PlacesTextsWhereTheyBelong)
{
    const plot::Panel panel{"V", -1.0, 1.0, {{"U_{L1}", 0, false, {}}}};
    const plot::Picture picture{
        "title",
        "caption",
        0.0,
        10.0,
        {{0.0, 5.0, 0, "0: steady"}, {5.0, 5.1, 7, "7: sag"}, {5.1, 10.0, 0, "0: steady"}},
        {{2.0, "command a"}, {2.1, "command b"}, {9.9, "command c"}},
        {panel},
        {},
        {}};
    const plot::Layout layout = layOut(picture);
    std::string texts;
    for (const plot::LaidText& text : layout.mTexts) {
        texts += text.mStyle == plot::TextStyle::Muted ? "" : text.mText + "|";
    }
    EXPECT_EQ(texts,
              "title|command a|command b|command c|0: steady|0: steady|V|U_{L1}|"
              "time since the first sample, s|");
    ASSERT_EQ(layout.mArrows.size(), 3);
    const plot::LaidText& b = layout.mTexts[3];
    const plot::LaidText& c = layout.mTexts[4];
    EXPECT_GT(b.mY, c.mY) << "a is in the way of b, not of c";
    EXPECT_NEAR(boxOf(b).mLeft, layout.mArrows[1].mX, 10.0);
    EXPECT_NEAR(boxOf(c).mRight, layout.mArrows[2].mX, 10.0);
    EXPECT_EQ(layout.mBar[0].mShade, layout.mBar[2].mShade);
    EXPECT_NE(layout.mBar[0].mShade, layout.mBar[1].mShade);
}

TEST(LabelTextTest, CountsAndShortensLetters)
{
    EXPECT_EQ(plot::shortened("Größe 12 phase A", 9), "Größ…se A");
    EXPECT_EQ(plot::shortened("Größe", 5), "Größe");
    EXPECT_EQ(plot::shortened("U_{L1}", 3), "U_{L1}");
    EXPECT_EQ(plot::letterCount("a_b"), 3);
    EXPECT_EQ(plot::withoutIndex("U_{L1}"), "U_L1");
    EXPECT_THAT(plot::wrappedIntoLines("one; two; a longer part; end", 10),
                testing::ElementsAre("one; two;", "a lo…part;", "end"));
}

/** Names come from files, so gnuplot must get them only as texts. */
TEST(GnuplotScriptTest, QuotesTexts)
{
    const plot::Panel panel{"it's\n`V`_x", 0.0, 2.0, {{"$a \"", 0, false, {{0, 1}}}}};
    const plot::Picture picture{"t", "c", 0.0, 1.0, {}, {}, {panel}, {}, {}};
    EXPECT_THAT(gnuplotScript(layOut(picture), plot::PictureFormat::Svg),
                AllOf(HasSubstr("set terminal svg "), HasSubstr("set label 'it''s `V`_x' at "),
                      HasSubstr("set label '$a \"' at "), HasSubstr("$data0 << EOD\n0 1\nEOD\n")));
    EXPECT_THAT(gnuplotScript(layOutOnTerminal(picture, 80), 80, false),
                AllOf(HasSubstr("set terminal dumb mono noenhanced nofeed size 80"),
                      HasSubstr("set title 'it''s `V`_x'"), HasSubstr("title '$a \"'")));
}
