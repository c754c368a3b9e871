#include <algorithm>
#include <cmath>

#include "plot/BarLayout.h"
#include "plot/LabelText.h"
#include "plot/Layout.h"
#include "plot/LayoutSizes.h"

namespace plot {

namespace {
constexpr double kMargin = 28.0; ///< at the left of the title, and at the right

// Distances from the top.
constexpr double kTitleMiddle = 27.0;
constexpr double kCaptionMiddle = 56.0; ///< of its first line
constexpr double kCaptionStep = 21.0;
constexpr double kHeadHeight = 76.0; ///< with one line of the caption

constexpr double kPanelHeight = 126.0;
constexpr double kHertzHeight = 76.0;
constexpr double kWaveHeight = 250.0;
constexpr double kMaxSquare = 560.0;
constexpr double kGap = 20.0; ///< between a panel and the one below

// Below the lowest panel of a column: numbers and title of the time axis.
constexpr double kTimeTextMiddle = 18.5;
constexpr double kTimeTitleMiddle = 37.0;
constexpr double kTimeHeight = 62.0;

constexpr double kColumnGap = 48.0;
constexpr double kColumnTitleHeight = 44.0; ///< above its upper panel
constexpr double kColumnTitleMiddle = 24.0; ///< above the panel

/** Max distance by which a number may extend beyond the end of its axis. */
constexpr double kOverhang = kColumnGap / 2.0 - 1.0;

// Numbers and title of the axis at the left of a panel.
constexpr double kAxisTitleMiddle = 18.0;
constexpr double kAxisTitleWidth = 22.0;
constexpr double kMinLeft = 91.0;

// The key at the right of the panels.
constexpr double kKeyLineBegin = 24.0;
constexpr double kKeyLineEnd = 40.0;
constexpr double kKeyText = 51.0;
constexpr double kKeyMargin = 14.0;
constexpr double kKeyFirst = 9.0; ///< middle of the first entry, below the top of the panel
constexpr double kKeyStep = 18.5;

constexpr double kWholeLineWidth = 2.0;
constexpr double kWaveLineWidth = 1.5;

// Wanted number of ticks on a vertical axis.
constexpr double kPanelTicks = 4.0;
constexpr double kHertzTicks = 2.0;
constexpr double kWaveTicks = 5.0; ///< with fewer, a range around 0 may have 0 as its only tick

double widthOf(const std::string& text)
{
    return static_cast<double>(letterCount(text)) * kLetterWidth;
}

double heightOf(const Panel& panel)
{
    return panel.mIsFrequency ? kHertzHeight : kPanelHeight;
}

Axis wholeAxis(const Panel& panel)
{
    return valueAxis(panel.mLow, panel.mHigh, panel.mIsFrequency ? kHertzTicks : kPanelTicks);
}

Axis waveAxis(const Panel& panel)
{
    return valueAxis(panel.mLow, panel.mHigh, kWaveTicks);
}

class LayoutBuilder
{
public:
    explicit LayoutBuilder(const Picture& picture) : mPicture(picture) {}

    Layout build();

private:
    void chooseSides();
    void addHead();
    void addBar();
    void addWhole();
    void addColumns();
    void addColumn(const WaveColumn& column, double left, double right, double height);
    void addValueTexts(const LaidPanel& panel);
    void addTimeTexts(const LaidPanel& panel);
    void addKey(const LaidPanel& panel);

    const Picture& mPicture;
    Layout mLayout;
    double mLeft = kMinLeft; ///< of all panels
    double mRight = 0.0;
    double mTop = 0.0; ///< top of the next part
};

Layout LayoutBuilder::build()
{
    chooseSides();
    addHead();
    addBar();
    addWhole();
    addColumns();
    mLayout.mHeight = mTop;
    return std::move(mLayout);
}

/** Sets the margins for the widest number at the left and the widest name at the right. */
void LayoutBuilder::chooseSides()
{
    double number = 0.0;
    double name = 0.0;
    const auto include = [&](const Panel& panel, const Axis& axis) {
        for (const Tick& tick : axis.mTicks) {
            number = std::max(number, widthOf(tick.mLabel));
        }
        for (const Curve& curve : panel.mCurves) {
            name = std::max(name, widthOf(curve.mLabel));
        }
    };
    for (const Panel& panel : mPicture.mWhole) {
        include(panel, wholeAxis(panel));
    }
    for (const WaveColumn& column : mPicture.mColumns) {
        for (const Panel& panel : column.mPanels) {
            include(panel, waveAxis(panel));
        }
    }
    mLeft = std::max(kMinLeft, kAxisTitleMiddle + kAxisTitleWidth / 2.0 + number + kBesideAxis);
    mRight = kLayoutWidth - kKeyText - name - kKeyMargin;
}

void LayoutBuilder::addHead()
{
    const double room = kLayoutWidth - 2.0 * kMargin;
    const auto titleLetters = static_cast<size_t>(room / kTitleLetterWidth);
    mLayout.mTexts.push_back({shortened(mPicture.mTitle, titleLetters), kMargin, kTitleMiddle,
                              Anchor::Left, TextStyle::Title});
    mTop = kHeadHeight - kCaptionStep;
    double middle = kCaptionMiddle;
    for (const std::string& line :
         wrappedIntoLines(mPicture.mCaption, static_cast<size_t>(room / kLetterWidth))) {
        mLayout.mTexts.push_back({line, kMargin, middle, Anchor::Left, TextStyle::Muted});
        middle += kCaptionStep;
        mTop += kCaptionStep;
    }
}

void LayoutBuilder::addBar()
{
    const double bottom = BarLayout(mPicture, mLeft, mRight, mTop, mLayout).add();
    mTop = bottom > mTop ? bottom + kGap : mTop;
}

void LayoutBuilder::addWhole()
{
    if (mPicture.mWhole.empty()) {
        return;
    }
    std::vector<Mark> marks;
    for (const GivenCommand& command : mPicture.mCommands) {
        marks.push_back({command.mSeconds, true});
    }
    const Axis time = timeAxis(mPicture.mBegin, mPicture.mEnd, (mRight - mLeft) / kLetterWidth);
    for (const Panel& panel : mPicture.mWhole) {
        const double bottom = mTop + heightOf(panel);
        mLayout.mPanels.push_back({{mLeft, mTop, mRight, bottom},
                                   time,
                                   wholeAxis(panel),
                                   kWholeLineWidth,
                                   marks,
                                   &panel});
        addValueTexts(mLayout.mPanels.back());
        addKey(mLayout.mPanels.back());
        mTop = bottom + kGap;
    }
    addTimeTexts(mLayout.mPanels.back());
    mTop += kTimeHeight;
}

void LayoutBuilder::addColumns()
{
    if (mPicture.mColumns.empty()) {
        return;
    }
    const auto columns = static_cast<double>(mPicture.mColumns.size());
    const double share = (mRight - mLeft - (columns - 1.0) * kColumnGap) / columns;
    const bool isSquare = mPicture.mColumns[0].mIsSquare;
    const double width = isSquare ? std::min(share, kMaxSquare) : share;
    const double height = isSquare ? width : kWaveHeight;
    double left = mLeft;
    for (const WaveColumn& column : mPicture.mColumns) {
        addColumn(column, left, left + width, height);
        left += width + kColumnGap;
    }
    const auto panels = static_cast<double>(mPicture.mColumns[0].mPanels.size());
    mTop += kColumnTitleHeight + panels * (height + kGap) + kTimeHeight;
}

void LayoutBuilder::addColumn(const WaveColumn& column, double left, double right, double height)
{
    double top = mTop + kColumnTitleHeight;
    std::vector<Mark> marks;
    if (column.mMark) {
        marks.push_back({*column.mMark, false});
    }
    const Axis time = timeAxis(column.mFrom, column.mTo, (right - left) / kLetterWidth);
    mLayout.mTexts.push_back(
        {shortened(column.mTitle, static_cast<size_t>((right - left) / kLetterWidth)),
         (left + right) / 2.0, top - kColumnTitleMiddle, Anchor::Centre});
    for (const Panel& panel : column.mPanels) {
        const Box area{left, top, right, top + height};
        mLayout.mPanels.push_back({area, time, waveAxis(panel), kWaveLineWidth, marks, &panel});
        if (left == mLeft) {
            addValueTexts(mLayout.mPanels.back());
            addKey(mLayout.mPanels.back());
        }
        top = area.mBottom + kGap;
    }
    addTimeTexts(mLayout.mPanels.back());
}

void LayoutBuilder::addValueTexts(const LaidPanel& panel)
{
    const Box& area = panel.mArea;
    for (const Tick& tick : panel.mValues.mTicks) {
        mLayout.mTexts.push_back({tick.mLabel, area.mLeft - kBesideAxis,
                                  area.mBottom - panel.mValues.share(tick.mValue) * area.height(),
                                  Anchor::Right, TextStyle::Muted});
    }
    const auto letters = static_cast<size_t>(area.height() / kLetterWidth);
    mLayout.mTexts.push_back({shortened(panel.mPanel->mAxis, letters), kAxisTitleMiddle,
                              (area.mTop + area.mBottom) / 2.0, Anchor::Upright});
}

void LayoutBuilder::addTimeTexts(const LaidPanel& panel)
{
    const Box& area = panel.mArea;
    for (const Tick& tick : panel.mTime.mTicks) {
        const LaidText text{tick.mLabel, area.mLeft + panel.mTime.share(tick.mValue) * area.width(),
                            area.mBottom + kTimeTextMiddle, Anchor::Centre, TextStyle::Muted};
        const Box box = boxOf(text);
        if (box.mLeft >= area.mLeft - kOverhang && box.mRight <= area.mRight + kOverhang) {
            mLayout.mTexts.push_back(text);
        }
    }
    mLayout.mTexts.push_back({mPicture.mBelow, (area.mLeft + area.mRight) / 2.0,
                              area.mBottom + kTimeTitleMiddle, Anchor::Centre});
}

/** The key has no lines for the second signal: its curves are dashed and lighter. */
void LayoutBuilder::addKey(const LaidPanel& panel)
{
    double middle = panel.mArea.mTop + kKeyFirst;
    for (const Curve& curve : panel.mPanel->mCurves) {
        if (curve.mIsSecond || curve.mLabel.empty()) {
            continue;
        }
        const double top = middle - kLineHeight / 2.0;
        mLayout.mKey.push_back(
            {{mRight + kKeyLineBegin, top, mRight + kKeyLineEnd, top + kLineHeight},
             panel.mLineWidth,
             curve.mColour});
        mLayout.mTexts.push_back({curve.mLabel, mRight + kKeyText, middle});
        middle += kKeyStep;
    }
}
} // namespace

Box boxOf(const LaidText& text)
{
    const bool isTitle = text.mStyle == TextStyle::Title;
    const double width =
        static_cast<double>(letterCount(text.mText)) * (isTitle ? kTitleLetterWidth : kLetterWidth);
    const double half = (isTitle ? kTitleHeight : kLineHeight) / 2.0;
    if (text.mAnchor == Anchor::Upright) {
        return {text.mX - half, text.mY - width / 2.0, text.mX + half, text.mY + width / 2.0};
    }
    const double left = text.mAnchor == Anchor::Left    ? text.mX
                        : text.mAnchor == Anchor::Right ? text.mX - width
                                                        : text.mX - width / 2.0;
    return {left, text.mY - half, left + width, text.mY + half};
}

Layout layOut(const Picture& picture)
{
    return LayoutBuilder(picture).build();
}

} // namespace plot
