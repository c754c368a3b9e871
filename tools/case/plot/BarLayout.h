#pragma once

#include "plot/Layout.h"

namespace plot {

/** Lays out the bar of what was played, with the commands above it. */
class BarLayout
{
public:
    /**
     * @param left and right ends of the bar
     * @param top of the commands' texts
     * Borrows the picture and the layout, to which it adds.
     */
    BarLayout(const Picture& picture, double left, double right, double top, Layout& layout);

    /** Adds everything. @return the bottom of the bar; `top` if there is nothing to show */
    double add();

    /** The horizontal position of a time. */
    double xOf(double seconds) const;

private:
    void addParts(double top, double bottom);
    void addCommand(const GivenCommand& command);
    void addArrows(double top, double bottom);

    const Picture& mPicture;
    double mLeft;
    double mRight;
    double mTop;
    Layout& mLayout;
    std::vector<double> mRowEnds;   ///< of the commands' texts in each row
    std::vector<double> mArrowTops; ///< of each command; none without a text
};

} // namespace plot
