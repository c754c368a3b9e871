#include "plot/GnuplotScript.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

#include "plot/LabelText.h"

namespace plot {

namespace {
/** Colours of curves by Curve::mColour, and lighter ones for the second signal. */
constexpr std::array<const char*, kFrequencyColour + 1> kColours = {"#0072b2", "#d55e00", "#009e73",
                                                                    "#808080", "#000000"};
// Not a plain grey: on a terminal, gnuplot uses a colour for it that does not exist.
constexpr std::array<const char*, kFrequencyColour + 1> kLighter = {"#56c4ff", "#ffb27a", "#5fe0b8",
                                                                    "#c0c0c8", "#56c4ff"};
constexpr std::array<const char*, 6> kShades = {"#dbe9f6", "#fbdcc4", "#d8efdf",
                                                "#eadcf2", "#f6efc8", "#e2e2e2"};
constexpr char kMutedColour[] = "#404040";
constexpr char kCommandColour[] = "#9b1fa8";

/** Settings of a picture format. The fonts are 14 and 21 units high in all formats. */
struct FormatSettings
{
    const char* mTerminal;
    double mPixelsPerUnit;
    int mFontSize;
    int mTitleSize;
};
constexpr FormatSettings kSvg = {"svg", 1.0, 14, 21};
constexpr FormatSettings kPng = {"pngcairo", 6.0 / 7.0, 9, 14};

/** Width of lines that are drawn as bars: bars of four channels fit side by side for a harmonic. */
constexpr double kBarWidth = 4.0;

/** Height of a panel on a terminal, in lines of characters. */
constexpr int kTerminalLines = 14;

/** A text in the quotes in which gnuplot does not interpret it. */
std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : text) {
        const bool isControl = static_cast<unsigned char>(c) < ' ';
        result += c == '\'' ? "''" : std::string(1, isControl ? ' ' : c);
    }
    return result + "'";
}

const char* colourOf(const Curve& curve)
{
    return curve.mIsSecond ? kLighter[curve.mColour] : kColours[curve.mColour];
}

class Script
{
public:
    template <typename... Args>
    void add(fmt::format_string<Args...> text, Args&&... args)
    {
        mText += fmt::format(text, std::forward<Args>(args)...);
    }

    void addData(const Panel& panel);
    void addAxis(const char* name, const Axis& axis, bool hasNumbers);
    void addPlot(const Panel& panel, double lineWidth, const std::vector<std::string>& names);
    void addText(const LaidText& text, int titleSize);
    void addMarks(const std::vector<Mark>& marks);
    void addShapes(const Layout& layout, int titleSize);
    void addPanel(const LaidPanel& panel, double height);

    std::string mText;

private:
    size_t mBlocks = 0; ///< of data so far
};

/** Adds each curve as a block: $data0, $data1, ... */
void Script::addData(const Panel& panel)
{
    for (const Curve& curve : panel.mCurves) {
        add("$data{} << EOD\n", mBlocks++);
        for (const Point& point : curve.mPoints) {
            add("{:.12g} {:.6g}\n", point.mX, point.mY);
        }
        // An empty block is an error; a row without numbers is allowed.
        mText += curve.mPoints.empty() ? "NaN NaN\nEOD\n" : "EOD\n";
    }
}

void Script::addAxis(const char* name, const Axis& axis, bool hasNumbers)
{
    std::vector<std::string> ticks;
    for (const Tick& tick : axis.mTicks) {
        ticks.push_back(
            fmt::format("{} {:.12g}", quoted(hasNumbers ? tick.mLabel : ""), tick.mValue));
    }
    add("set {0}range [{1:.12g}:{2:.12g}]\nset {0}tics nomirror ({3})\n", name, axis.mLow,
        axis.mHigh, fmt::join(ticks, ", "));
}

/** Draws the curves of the panel, whose blocks were added last. */
void Script::addPlot(const Panel& panel, double lineWidth, const std::vector<std::string>& names)
{
    const size_t first = mBlocks - panel.mCurves.size();
    for (size_t i = 0; i < panel.mCurves.size(); ++i) {
        const Curve& curve = panel.mCurves[i];
        add("{} $data{} using 1:2 with {} lw {} lc rgb '{}'{} {}", i == 0 ? "plot" : ",\\\n    ",
            first + i, curve.mHasBars ? "impulses" : "lines",
            curve.mHasBars ? kBarWidth : lineWidth, colourOf(curve), curve.mIsSecond ? " dt 2" : "",
            names.empty() ? "notitle" : "title " + quoted(names[i]));
    }
    mText += "\n";
}

void Script::addText(const LaidText& text, int titleSize)
{
    static constexpr std::array<const char*, 4> kAnchors = {"left", "center", "right",
                                                            "center rotate by 90"};
    add("set label {} at {:.2f},{:.2f} {}", quoted(text.mText), text.mX, text.mY,
        kAnchors[static_cast<size_t>(text.mAnchor)]);
    mText += hasIndex(text.mText) ? "" : " noenhanced";
    switch (text.mStyle) {
        case TextStyle::Title:
            add(" font ',{}'", titleSize);
            break;
        case TextStyle::Plain:
            break;
        case TextStyle::Muted:
            add(" textcolor rgb '{}'", kMutedColour);
            break;
        case TextStyle::Command:
            add(" front boxed textcolor rgb '{}'", kCommandColour);
            break;
    }
    mText += "\n";
}

void Script::addMarks(const std::vector<Mark>& marks)
{
    for (const Mark& mark : marks) {
        add("set arrow from {0:.12g}, graph 0 to {0:.12g}, graph 1 nohead lc rgb '{1}' {2}\n",
            mark.mSeconds, mark.mIsCommand ? kCommandColour : kMutedColour,
            mark.mIsCommand ? "lw 1.5 dt 2" : "dt 3");
    }
}

/**
 * Everything except the panels, over the whole picture; y counts from the top, as in the layout.
 */
void Script::addShapes(const Layout& layout, int titleSize)
{
    add("set lmargin at screen 0; set rmargin at screen 1; set tmargin at screen 1; "
        "set bmargin at screen 0\nunset border; unset tics; unset key\n"
        "set xrange [0:{:.2f}]; set yrange [{:.2f}:0]\n"
        "set style textbox opaque noborder margins 0.1, 0.1\n",
        kLayoutWidth, layout.mHeight);
    for (const BarPart& part : layout.mBar) {
        add("set object rectangle from {:.2f},{:.2f} to {:.2f},{:.2f} fc rgb '{}' fs solid 1.0 "
            "border rgb 'black' behind\n",
            part.mBox.mLeft, part.mBox.mTop, part.mBox.mRight, part.mBox.mBottom,
            kShades[part.mShade % kShades.size()]);
    }
    for (const KeyLine& line : layout.mKey) {
        add("set arrow from {:.2f},{:.2f} to {:.2f},{:.2f} nohead lw {} lc rgb '{}'\n",
            line.mBox.mLeft, line.mBox.middle(), line.mBox.mRight, line.mBox.middle(), line.mWidth,
            kColours[line.mColour]);
    }
    for (const CommandArrow& arrow : layout.mArrows) {
        add("set arrow from {0:.2f},{1:.2f} to {0:.2f},{2:.2f} head filled size screen 0.006,20 "
            "back lw 1.5 lc rgb '{3}'\n",
            arrow.mX, arrow.mTop, arrow.mBottom, kCommandColour);
    }
    for (const LaidText& text : layout.mTexts) {
        addText(text, titleSize);
    }
    mText += "plot NaN notitle\nunset label; unset object; unset arrow\n";
}

void Script::addPanel(const LaidPanel& panel, double height)
{
    add("set lmargin at screen {:.5f}; set rmargin at screen {:.5f}\n",
        panel.mArea.mLeft / kLayoutWidth, panel.mArea.mRight / kLayoutWidth);
    add("set tmargin at screen {:.5f}; set bmargin at screen {:.5f}\n",
        1.0 - panel.mArea.mTop / height, 1.0 - panel.mArea.mBottom / height);
    addAxis("x", panel.mTime, false);
    addAxis("y", panel.mValues, false);
    addData(*panel.mPanel);
    addMarks(panel.mMarks);
    addPlot(*panel.mPanel, panel.mLineWidth, {});
    mText += "unset arrow\n";
}
} // namespace

std::string gnuplotScript(const Layout& layout, PictureFormat format)
{
    const FormatSettings& settings = format == PictureFormat::Svg ? kSvg : kPng;
    Script script;
    script.add(
        "set encoding utf8\nset terminal {} size {:.0f},{:.0f} font 'DejaVu Sans,{}' "
        "background '#ffffff'\nset multiplot\n",
        settings.mTerminal, kLayoutWidth * settings.mPixelsPerUnit,
        layout.mHeight * settings.mPixelsPerUnit, settings.mFontSize);
    script.addShapes(layout, settings.mTitleSize);
    script.add("set border 3 lc rgb '{}'\nset grid lc rgb '#e4e4e4' lt 1\nset tics out\n",
               kMutedColour);
    for (const LaidPanel& panel : layout.mPanels) {
        script.addPanel(panel, layout.mHeight);
    }
    script.add("unset multiplot\n");
    return script.mText;
}

std::string gnuplotScript(const std::vector<TerminalPanel>& panels, int columns, bool hasColours)
{
    Script script;
    script.add("set encoding utf8\nset terminal dumb {} noenhanced nofeed size {},{}\n",
               hasColours ? "ansi256" : "mono", columns, kTerminalLines);
    script.add("set key outside right top samplen 1\nset tics nomirror\nset border 3\n");
    for (const TerminalPanel& panel : panels) {
        script.addMarks(panel.mMarks);
        script.addAxis("x", panel.mTime, true);
        script.addAxis("y", panel.mValues, true);
        script.add("set title {}\n", quoted(panel.mTitle));
        script.addData(*panel.mPanel);
        script.addPlot(*panel.mPanel, 1.0, panel.mNames);
        script.add("unset arrow\n");
    }
    return script.mText;
}

} // namespace plot
