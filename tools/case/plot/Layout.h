#pragma once

#include <string>
#include <vector>

#include "plot/AxisTicks.h"
#include "plot/Picture.h"

namespace plot {

/**
 * The layout of a picture as plain data. Positions are in units from the top left corner; the
 * picture is kLayoutWidth units wide. A unit is a pixel of SVG.
 */
inline constexpr double kLayoutWidth = 1400.0;

struct Box
{
    double mLeft;
    double mTop;
    double mRight;
    double mBottom;

    double width() const { return mRight - mLeft; }
    double height() const { return mBottom - mTop; }
    double middle() const { return (mTop + mBottom) / 2.0; }
};

enum class TextStyle
{
    Title,
    Plain,
    Muted,
    Command, ///< drawn in front of lines that cross it
};

enum class Anchor
{
    Left,
    Centre,
    Right,
    Upright, ///< centred, and read from the bottom to the top
};

/** A line of text. */
struct LaidText
{
    std::string mText;
    double mX; ///< of the anchor
    double mY; ///< of the middle of the line
    Anchor mAnchor = Anchor::Left;
    TextStyle mStyle = TextStyle::Plain;
};

/** The box of a text, by the mean width of a letter. */
Box boxOf(const LaidText& text);

/** From the text of a command down to the end of the bar. */
struct CommandArrow
{
    double mX;
    double mTop;
    double mBottom;
};

/** A part of the bar. */
struct BarPart
{
    Box mBox;
    size_t mShade; ///< from 0 on; the same for the same configuration
};

/** The sample line of a curve beside its name. */
struct KeyLine
{
    Box mBox; ///< the line goes through its middle
    double mWidth;
    size_t mColour;
};

/** Axes with curves. The numbers at the ticks are among the texts of the layout. */
struct LaidPanel
{
    Box mArea;
    Axis mTime;
    Axis mValues;
    double mLineWidth;
    std::vector<Mark> mMarks;
    const Panel* mPanel; ///< borrowed from the picture
};

struct Layout
{
    double mHeight = 0.0;
    std::vector<LaidText> mTexts;
    std::vector<CommandArrow> mArrows;
    std::vector<BarPart> mBar;
    std::vector<KeyLine> mKey;
    std::vector<LaidPanel> mPanels;
};

/**
 * Borrows the picture, which must outlive the layout. Requires: a panel over the whole or a column,
 * and a panel in each column.
 */
Layout layOut(const Picture& picture);

} // namespace plot
