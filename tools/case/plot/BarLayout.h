#pragma once

#include "plot/Layout.h"

namespace plot {

/** Lays out the bar: what was played when, and the commands above it. */
class BarLayout
{
public:
    /**
     * @param left and right ends of the bar
     * @param top of the commands' texts
     * Borrows the picture and the layout, to which it adds.
     */
    BarLayout(const Picture& picture, double left, double right, double top, Layout& layout);

    /** Adds everything. @return where the bar ends; `top` where there is nothing to show */
    double add();

    /** Where a time lies. */
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
