#include "plot/TerminalLayout.h"

#include "plot/LabelText.h"

namespace plot {

namespace {
/** Characters that the numbers and the key need beside a panel. */
constexpr int kBesidePanel = 22;

// Wanted number of ticks on a vertical axis.
constexpr double kTerminalPanelTicks = 3.0;
constexpr double kTerminalWaveTicks = 5.0; ///< with fewer, 0 may be the only tick

TerminalPanel panelOf(const Panel& panel, const std::string& title, const Axis& time, double ticks)
{
    TerminalPanel laid{title, time, valueAxis(panel.mLow, panel.mHigh, ticks), {}, {}, &panel};
    for (Tick& tick : laid.mValues.mTicks) {
        tick.mLabel.insert(0, tick.mValue < 0.0 ? "" : " "); // as wide as one with a minus sign
    }
    for (const Curve& curve : panel.mCurves) {
        laid.mNames.push_back(withoutIndex(curve.mLabel) + (curve.mIsSecond ? " (2)" : ""));
    }
    return laid;
}
} // namespace

std::vector<TerminalPanel> layOutOnTerminal(const Picture& picture, int columns)
{
    const auto width = static_cast<size_t>(columns);
    const double letters = columns - kBesidePanel;
    std::vector<TerminalPanel> panels;
    const Axis whole = timeAxis(picture.mBegin, picture.mEnd, letters);
    for (const Panel& panel : picture.mWhole) {
        panels.push_back(panelOf(panel, shortened(panel.mAxis, width), whole, kTerminalPanelTicks));
        for (const GivenCommand& command : picture.mCommands) {
            panels.back().mMarks.push_back({command.mSeconds, true});
        }
    }
    for (const WaveColumn& column : picture.mColumns) {
        const Axis time = timeAxis(column.mFrom, column.mTo, letters);
        for (const Panel& panel : column.mPanels) {
            const std::string title = withoutIndex(column.mTitle) + ": " + panel.mAxis;
            panels.push_back(panelOf(panel, shortened(title, width), time, kTerminalWaveTicks));
        }
    }
    return panels;
}

} // namespace plot
