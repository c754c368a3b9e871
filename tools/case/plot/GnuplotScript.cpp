#include "plot/GnuplotScript.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {
constexpr std::array<const char*, 4> kColours = {"#0072b2", "#d55e00", "#009e73", "#808080"};
constexpr std::array<const char*, 4> kLighter = {"#56c4ff", "#ffb27a", "#5fe0b8", "#c0c0c0"};
constexpr std::array<const char*, 6> kShades = {"#dbe9f6", "#fbdcc4", "#d8efdf",
                                                "#eadcf2", "#f6efc8", "#e2e2e2"};
constexpr char kTextColour[] = "#404040";
constexpr char kMarkColour[] = "#9b1fa8";
constexpr char kFrequencyColour[] = "#000000";

// The layout of a drawn picture, in units of which the picture is so wide.
constexpr double kWidth = 1400.0;
constexpr double kPngScale = 6.0 / 7.0; ///< pixels a unit
constexpr double kLetterWidth = 8.5;
constexpr double kLeft = 91.0;
constexpr double kHeadHeight = 72.0;
constexpr double kCommandHeight = 28.0;
constexpr double kBarHeight = 32.0;
constexpr double kPanelHeight = 126.0;
constexpr double kHertzHeight = 76.0;
constexpr double kGap = 12.0;
constexpr double kAxisHeight = 62.0; ///< below the lowest panel
constexpr double kColumnTitleHeight = 44.0;
constexpr double kColumnGap = 48.0;
constexpr double kWaveHeight = 250.0;
constexpr size_t kMostCommandLines = 4;

/** What belongs to the terminal's picture, in characters. */
constexpr int kTerminalPanelLines = 14;

std::string withoutControl(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

/** As gnuplot takes a text that it does not look into. */
std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : withoutControl(text)) {
        result += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return result + "'";
}

/** A label without the signs of an index. */
std::string plain(std::string text)
{
    const bool hasIndex = text.find("_{") != std::string::npos;
    const auto isBrace = [](char c) { return c == '{' || c == '}'; };
    text.erase(hasIndex ? std::remove_if(text.begin(), text.end(), isBrace) : text.end(),
               text.end());
    return text;
}

/** A label in which "_{...}" is an index and all else is meant as it stands. */
std::string labelled(const std::string& text)
{
    const bool hasIndex = text.find("_{") != std::string::npos;
    std::string result;
    for (const char c : text) {
        if (!hasIndex && std::string_view("_^{}@&~\\").find(c) != std::string_view::npos) {
            result += '\\';
        }
        result += c;
    }
    return quoted(result);
}

std::string range(const char* axis, double low, double high)
{
    return fmt::format("set {}range [{:.9g}:{:.9g}]\n", axis, low, high);
}

/** A round step of which about `steps` fill the width. */
double roundStep(double width, double steps)
{
    const double decade = std::pow(10.0, std::floor(std::log10(width / steps)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * decade * steps >= width) {
            return factor * decade;
        }
    }
    return 10.0 * decade;
}

/** Characters of UTF-8 text without the signs of an index. */
size_t widthOf(const std::string& text)
{
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](unsigned char c) {
        return (c & 0xC0U) != 0x80 && c != '_' && c != '{' && c != '}';
    }));
}

/** Writes the script; a class only to share what it grows from. */
class Script
{
public:
    Script(const Picture& picture, const Canvas& canvas) : mPicture(picture), mCanvas(canvas) {}

    std::string draw();
    std::string drawOnTerminal();

private:
    void addData();
    void addCurves(const Panel& panel, const std::string& block);
    void addPlot(const Panel& panel, const std::string& block, double lineWidth);
    void place(double left, double right, double top, double bottom);
    void addHead();
    void addBar();
    void addCommands(double top, double bottom);
    void addWhole();
    void addCommandLines();
    void addColumns();
    void addColumn(const WaveColumn& column, size_t index, double left, double right);
    void addPanelAxis(const Panel& panel, double steps);
    std::string label(const std::string& text) const
    {
        return isOnTerminal() ? quoted(plain(text)) : labelled(text);
    }
    bool isOnTerminal() const { return mCanvas.mKind == Canvas::Kind::Terminal; }
    double heightOf(const Panel& panel) const;
    double pictureHeight() const;
    double panelsRight() const;
    size_t commandLines() const { return std::min(mPicture.mCommands.size(), kMostCommandLines); }
    template <typename... Args>
    void add(fmt::format_string<Args...> text, Args&&... args)
    {
        mText += fmt::format(text, std::forward<Args>(args)...);
    }

    const Picture& mPicture;
    const Canvas& mCanvas;
    std::string mText;
    double mTop = 0.0; ///< where the next thing is placed
};

double Script::pictureHeight() const
{
    double height = kHeadHeight;
    if (!mPicture.mPlayed.empty() || !mPicture.mCommands.empty()) {
        height += kCommandHeight * static_cast<double>(commandLines()) + kBarHeight + kGap;
    }
    for (const Panel& panel : mPicture.mWhole) {
        height += heightOf(panel) + kGap;
    }
    height += kAxisHeight;
    if (!mPicture.mColumns.empty()) {
        const auto panels = static_cast<double>(mPicture.mColumns[0].mPanels.size());
        height += kColumnTitleHeight + panels * (kWaveHeight + kGap) + kAxisHeight;
    }
    return height;
}

double Script::heightOf(const Panel& panel) const
{
    return panel.mAxis == "Hz" ? kHertzHeight : kPanelHeight;
}

/** Leaves place for the key. */
double Script::panelsRight() const
{
    size_t widest = 0;
    for (const Panel& panel : mPicture.mWhole) {
        for (const Curve& curve : panel.mCurves) {
            widest = std::max(widest, widthOf(curve.mLabel));
        }
    }
    constexpr double kKeyLine = 65.0;
    return kWidth - kKeyLine - kLetterWidth * static_cast<double>(widest);
}

void Script::place(double left, double right, double top, double bottom)
{
    const double height = pictureHeight();
    add("set lmargin at screen {:.5f}; set rmargin at screen {:.5f}\n", left / kWidth,
        right / kWidth);
    add("set tmargin at screen {:.5f}; set bmargin at screen {:.5f}\n", 1.0 - top / height,
        1.0 - bottom / height);
}

void Script::addCurves(const Panel& panel, const std::string& block)
{
    for (size_t i = 0; i < panel.mCurves.size(); ++i) {
        add("${}_{} << EOD\n", block, i);
        for (const Point& point : panel.mCurves[i].mPoints) {
            add("{:.9g} {:.6g}\n", point.mX, point.mY);
        }
        // An empty block is an error, a row without numbers is none.
        mText += panel.mCurves[i].mPoints.empty() ? "NaN NaN\nEOD\n" : "EOD\n";
    }
}

void Script::addData()
{
    for (size_t i = 0; i < mPicture.mWhole.size(); ++i) {
        addCurves(mPicture.mWhole[i], fmt::format("whole{}", i));
    }
    for (size_t i = 0; i < mPicture.mColumns.size(); ++i) {
        for (size_t j = 0; j < mPicture.mColumns[i].mPanels.size(); ++j) {
            addCurves(mPicture.mColumns[i].mPanels[j], fmt::format("wave{}_{}", i, j));
        }
    }
}

void Script::addPlot(const Panel& panel, const std::string& block, double lineWidth)
{
    for (size_t i = 0; i < panel.mCurves.size(); ++i) {
        const Curve& curve = panel.mCurves[i];
        const char* const colour = panel.mAxis == "Hz" && !curve.mIsSecond ? kFrequencyColour
                                   : curve.mIsSecond ? kLighter[curve.mColour % kLighter.size()]
                                                     : kColours[curve.mColour % kColours.size()];
        add("{} ${}_{} using 1:2 with lines lw {} lc rgb '{}'{} {}", i == 0 ? "plot" : ",\\\n    ",
            block, i, lineWidth, colour, curve.mIsSecond ? " dt 2" : "",
            curve.mLabel.empty() ? "notitle" : "title " + label(curve.mLabel));
    }
    mText += "\n";
}

void Script::addPanelAxis(const Panel& panel, double steps)
{
    mText += range("y", panel.mLow, panel.mHigh);
    add("set ytics {:.9g}\n", roundStep(panel.mHigh - panel.mLow, steps));
}

void Script::addHead()
{
    const double height = pictureHeight();
    add("set label 91 {} at screen 0.02, screen {:.5f} font ',{}' noenhanced\n",
        quoted(mPicture.mTitle), 1.0 - 27.0 / height, mCanvas.mKind == Canvas::Kind::Png ? 14 : 21);
    add("set label 92 {} at screen 0.02, screen {:.5f} textcolor rgb '{}' noenhanced\n",
        quoted(mPicture.mCaption), 1.0 - 56.0 / height, kTextColour);
    mTop = kHeadHeight;
}

/** The commands share lines, the first in the highest. */
void Script::addCommands(double top, double bottom)
{
    for (size_t i = 0; i < mPicture.mCommands.size(); ++i) {
        const GivenCommand& command = mPicture.mCommands[i];
        const double line = static_cast<double>(i % kMostCommandLines);
        const double y =
            1.0 + (bottom - top - kBarHeight - line * kCommandHeight - 12.0) / kBarHeight;
        add("set arrow from {0:.9g}, {1:.5f} to {0:.9g}, 0 head filled size screen 0.006, 20 front "
            "lc rgb '{2}' lw 1.5\n",
            command.mSeconds, y, kMarkColour);
        if (i >= kMostCommandLines && mPicture.mCommands.size() > 2 * kMostCommandLines) {
            continue;
        }
        const bool isLate = command.mSeconds > 0.7 * mPicture.mEnd;
        add("set label {} at {:.9g}, {:.5f} {} textcolor rgb '{}' noenhanced\n",
            quoted("  " + command.mText + "  "), command.mSeconds, y, isLate ? "right" : "left",
            kMarkColour);
    }
}

void Script::addBar()
{
    if (mPicture.mPlayed.empty() && mPicture.mCommands.empty()) {
        return;
    }
    const double bottom = mTop + kCommandHeight * static_cast<double>(commandLines()) + kBarHeight;
    const double width = panelsRight() - kLeft;
    place(kLeft, panelsRight(), bottom - kBarHeight, bottom);
    mText += "unset border\nunset tics\nset yrange [0:1]\n";
    add("set label 'playing' at screen {:.5f}, graph 0.5 right textcolor rgb '{}'\n",
        (kLeft - 9.0) / kWidth, kTextColour);
    std::vector<int> known;
    for (size_t i = 0; i < mPicture.mPlayed.size(); ++i) {
        const PlayedPart& part = mPicture.mPlayed[i];
        auto found = std::find(known.begin(), known.end(), part.mConfiguration);
        found = found == known.end() ? known.insert(found, part.mConfiguration) : found;
        add("set object {} rectangle from {:.9g}, 0 to {:.9g}, 1 fc rgb '{}' fs solid 1.0 border "
            "rgb "
            "'black' behind\n",
            i + 1, part.mFrom, part.mTo,
            kShades[static_cast<size_t>(found - known.begin()) % kShades.size()]);
        const double letters =
            (part.mTo - part.mFrom) / (mPicture.mEnd - mPicture.mBegin) * width / kLetterWidth -
            1.0;
        const std::string number = std::to_string(part.mConfiguration);
        const bool isRoomy = letters > static_cast<double>(widthOf(part.mText));
        if (isRoomy || letters > static_cast<double>(number.size())) {
            add("set label {} at {:.9g}, 0.5 center noenhanced\n",
                quoted(isRoomy ? part.mText : number), (part.mFrom + part.mTo) / 2.0);
        }
    }
    addCommands(mTop, bottom);
    mText += "plot NaN notitle\nunset label\nunset object\nunset arrow\n";
    mTop = bottom + kGap;
}

void Script::addCommandLines()
{
    for (const GivenCommand& command : mPicture.mCommands) {
        add("set arrow from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead lc rgb '{1}' lw 1.5 dt 2\n",
            command.mSeconds, kMarkColour);
    }
}

void Script::addWhole()
{
    add("set border 3 lc rgb '{}'\nset grid lc rgb '#e4e4e4' lt 1\nset ytics nomirror\n",
        kTextColour);
    add("set xtics autofreq nomirror format ''\n");
    add("set key at screen {:.5f}, graph 1.0 left top vertical samplen 1.2 spacing 1.15 reverse "
        "Left\n",
        (panelsRight() + 14.0) / kWidth);
    addCommandLines();
    for (size_t i = 0; i < mPicture.mWhole.size(); ++i) {
        const Panel& panel = mPicture.mWhole[i];
        const double height = heightOf(panel);
        place(kLeft, panelsRight(), mTop, mTop + height);
        addPanelAxis(panel, height > kHertzHeight ? 4.0 : 2.0);
        add("set ylabel {} offset 1\n", quoted(panel.mAxis));
        if (i + 1 == mPicture.mWhole.size()) {
            mText +=
                "set xtics format '%g'\n"
                "set xlabel 'time since the first sample, s' offset 0, 0.5\n";
        }
        addPlot(panel, fmt::format("whole{}", i), 2.0);
        mText += "unset label 91\nunset label 92\n";
        mTop += height + kGap;
    }
    mText += "unset arrow\n";
    mTop += kAxisHeight;
}

void Script::addColumn(const WaveColumn& column, size_t index, double left, double right)
{
    mText += range("x", column.mFrom, column.mTo);
    const double step = roundStep(column.mTo - column.mFrom, right - left > kWidth / 2 ? 15 : 5);
    if (column.mMark) {
        add("set arrow 1 from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead lc rgb '{1}' dt 3\n",
            *column.mMark, kTextColour);
    }
    double top = mTop + kColumnTitleHeight;
    for (size_t i = 0; i < column.mPanels.size(); ++i) {
        const Panel& panel = column.mPanels[i];
        const bool isLowest = i + 1 == column.mPanels.size();
        place(left, right, top, top + kWaveHeight);
        // Fewer steps may leave a range around 0 with 0 alone.
        addPanelAxis(panel, 5.0);
        if (index > 0) {
            mText += "unset key\nunset ylabel\nset ytics format ''\n";
        } else {
            add("set ylabel {} offset 1\nset ytics format '%g'\n", quoted(panel.mAxis));
        }
        mText += i == 0 ? "set title " + label(column.mTitle) + "\n" : "unset title\n";
        add("set xtics {:.9g} format '{}'\n", step, isLowest ? "%g" : "");
        mText += isLowest ? "set xlabel 'time since the first sample, s' offset 0, 0.5\n"
                          : "unset xlabel\n";
        addPlot(panel, fmt::format("wave{}_{}", index, i), 1.5);
        top += kWaveHeight + kGap;
    }
    mText += "unset arrow 1\n";
}

void Script::addColumns()
{
    const auto columns = static_cast<double>(mPicture.mColumns.size());
    const double width = (panelsRight() - kLeft - (columns - 1.0) * kColumnGap) / columns;
    for (size_t i = 0; i < mPicture.mColumns.size(); ++i) {
        const double left = kLeft + static_cast<double>(i) * (width + kColumnGap);
        addColumn(mPicture.mColumns[i], i, left, left + width);
    }
}

std::string Script::draw()
{
    addData();
    const bool isSvg = mCanvas.mKind == Canvas::Kind::Svg;
    const double scale = isSvg ? 1.0 : kPngScale;
    add("set encoding utf8\nset terminal {} size {:.0f},{:.0f} font 'DejaVu Sans,{}' "
        "background '#ffffff'\n",
        isSvg ? "svg" : "pngcairo", kWidth * scale, pictureHeight() * scale, isSvg ? 14 : 9);
    mText += "set multiplot\n";
    add("set tics nomirror out textcolor rgb '{}'\n", kTextColour);
    mText += range("x", mPicture.mBegin, mPicture.mEnd);
    addHead();
    addBar();
    addWhole();
    addColumns();
    mText += "unset multiplot\n";
    return mText;
}

/** Panel by panel, one below the other, each over the whole width. */
std::string Script::drawOnTerminal()
{
    addData();
    add("set encoding utf8\nset terminal dumb {} noenhanced nofeed size {},{}\n",
        mCanvas.mHasColours ? "ansi256" : "mono", mCanvas.mColumns, kTerminalPanelLines);
    mText += "set key outside right top samplen 1\nset tics nomirror\nset border 3\n";
    mText += range("x", mPicture.mBegin, mPicture.mEnd);
    addCommandLines();
    for (size_t i = 0; i < mPicture.mWhole.size(); ++i) {
        const Panel& panel = mPicture.mWhole[i];
        addPanelAxis(panel, 3.0);
        add("set title {}\n", quoted(panel.mAxis));
        addPlot(panel, fmt::format("whole{}", i), 1.0);
    }
    mText += "unset arrow\n";
    for (size_t i = 0; i < mPicture.mColumns.size(); ++i) {
        const WaveColumn& column = mPicture.mColumns[i];
        mText += range("x", column.mFrom, column.mTo);
        for (size_t j = 0; j < column.mPanels.size(); ++j) {
            addPanelAxis(column.mPanels[j], 3.0);
            add("set title {}\n", label(column.mTitle + ": " + column.mPanels[j].mAxis));
            addPlot(column.mPanels[j], fmt::format("wave{}_{}", i, j), 1.0);
        }
    }
    return mText;
}
} // namespace

std::string gnuplotScript(const Picture& picture, const Canvas& canvas)
{
    Script script(picture, canvas);
    return canvas.mKind == Canvas::Kind::Terminal ? script.drawOnTerminal() : script.draw();
}
