#include "plot/BarLayout.h"

#include <algorithm>
#include <limits>

#include "plot/LabelText.h"
#include "plot/LayoutSizes.h"

namespace plot {

namespace {
constexpr double kBarHeight = 32.0;
constexpr double kRowHeight = 28.0;
constexpr double kRowMiddle = 12.0; ///< of a text, below the top of its row
constexpr size_t kMaxRows = 6;

/** Distance between a text and the arrow of its command. */
constexpr double kBesideArrow = 8.0;

/** Min distance between two texts of a row, and between a text and the end of the bar. */
constexpr double kBetweenTexts = 3.0 * kLetterWidth;

/**
 * Two texts of this length fit side by side, so any text fits to the left or right of its command.
 */
constexpr size_t kMaxCommandLetters = 56;

constexpr double kNoText = std::numeric_limits<double>::infinity();
} // namespace

BarLayout::BarLayout(const Picture& picture, double left, double right, double top, Layout& layout)
    : mPicture(picture), mLeft(left), mRight(right), mTop(top), mLayout(layout)
{
}

double BarLayout::xOf(double seconds) const
{
    const double share = (seconds - mPicture.mBegin) / (mPicture.mEnd - mPicture.mBegin);
    return mLeft + std::clamp(share, 0.0, 1.0) * (mRight - mLeft);
}

double BarLayout::add()
{
    if (mPicture.mPlayed.empty() && mPicture.mCommands.empty()) {
        return mTop;
    }
    for (const GivenCommand& command : mPicture.mCommands) {
        addCommand(command);
    }
    const double top = mTop + kRowHeight * static_cast<double>(mRowEnds.size());
    addArrows(top, top + kBarHeight);
    addParts(top, top + kBarHeight);
    return top + kBarHeight;
}

void BarLayout::addParts(double top, double bottom)
{
    if (mPicture.mPlayed.empty()) {
        return;
    }
    const double middle = (top + bottom) / 2.0;
    mLayout.mTexts.push_back(
        {"playing", mLeft - kBesideAxis, middle, Anchor::Right, TextStyle::Muted});
    std::vector<int> known;
    for (const PlayedPart& part : mPicture.mPlayed) {
        auto found = std::find(known.begin(), known.end(), part.mConfiguration);
        found = found == known.end() ? known.insert(found, part.mConfiguration) : found;
        const Box box{xOf(part.mFrom), top, xOf(part.mTo), bottom};
        mLayout.mBar.push_back({box, static_cast<size_t>(found - known.begin())});
        for (const std::string& text : {part.mText, std::to_string(part.mConfiguration)}) {
            if (static_cast<double>(letterCount(text) + 1) * kLetterWidth < box.width()) {
                mLayout.mTexts.push_back(
                    {text, (box.mLeft + box.mRight) / 2.0, middle, Anchor::Centre});
                break;
            }
        }
    }
}

/** Puts the text into the highest row with room; for a late command, to the left of it. */
void BarLayout::addCommand(const GivenCommand& command)
{
    const std::string text = shortened(command.mText, kMaxCommandLetters);
    const double width =
        static_cast<double>(letterCount(text)) * kLetterWidth + kBesideArrow + kBetweenTexts;
    const double x = xOf(command.mSeconds);
    const bool isLate = x + width > mRight;
    const double begin = isLate ? x - width : x;
    auto row =
        std::find_if(mRowEnds.begin(), mRowEnds.end(), [&](double end) { return end <= begin; });
    if (row == mRowEnds.end() && mRowEnds.size() == kMaxRows) {
        mArrowTops.push_back(kNoText);
        return;
    }
    row = row == mRowEnds.end() ? mRowEnds.insert(row, begin) : row;
    *row = begin + width;
    const double y = mTop + kRowHeight * static_cast<double>(row - mRowEnds.begin()) + kRowMiddle;
    mArrowTops.push_back(y);
    mLayout.mTexts.push_back({text, isLate ? x - kBesideArrow : x + kBesideArrow, y,
                              isLate ? Anchor::Right : Anchor::Left, TextStyle::Command});
}

void BarLayout::addArrows(double top, double bottom)
{
    for (size_t i = 0; i < mPicture.mCommands.size(); ++i) {
        mLayout.mArrows.push_back(
            {xOf(mPicture.mCommands[i].mSeconds), std::min(mArrowTops[i], top), bottom});
    }
}

} // namespace plot
