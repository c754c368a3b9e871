#include "plot/GnuplotScript.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include "base/Numbers.h"
#include "base/Text.h"
#include "plot/ShortText.h"

namespace plot {

namespace {
constexpr std::array<const char*, 4> kColours = {"#0072b2", "#d55e00", "#009e73", "#808080"};
// No plain grey: gnuplot gives terminals a colour for it that does not exist.
constexpr std::array<const char*, 4> kLighter = {"#56c4ff", "#ffb27a", "#5fe0b8", "#c0c0c8"};
constexpr std::array<const char*, 6> kShades = {"#dbe9f6", "#fbdcc4", "#d8efdf",
                                                "#eadcf2", "#f6efc8", "#e2e2e2"};
constexpr char kTextColour[] = "#404040";
constexpr char kMarkColour[] = "#9b1fa8";
constexpr char kTimeFormat[] = "%.9g";
constexpr char kFrequencyColour[] = "#000000";

// The layout of a drawn picture, in units of which the picture is so wide.
constexpr double kWidth = 1400.0;
constexpr double kPngScale = 6.0 / 7.0; ///< pixels a unit
constexpr double kLetterWidth = 8.5;
constexpr double kLeft = 91.0;
constexpr double kAxisTitle = 18.0;
constexpr double kHeadHeight = 72.0;
constexpr double kCaptionHeight = 21.0; ///< of each line but the first
constexpr size_t kCaptionLetters = 165;
constexpr size_t kTitleLetters = 100;
constexpr double kCommandHeight = 28.0;
constexpr double kBarHeight = 32.0;
constexpr double kPanelHeight = 126.0;
constexpr double kHertzHeight = 76.0;
constexpr double kGap = 20.0;
constexpr double kAxisHeight = 62.0; ///< below the lowest panel
constexpr double kColumnTitleHeight = 44.0;
constexpr double kColumnGap = 48.0;
constexpr double kWaveHeight = 250.0;
constexpr size_t kMaxCommandLines = 6;

/** Fewer may leave a range around 0 with 0 alone. */
constexpr double kWaveSteps = 5.0;

/** What belongs to the terminal's picture, in characters. */
constexpr int kTerminalPanelLines = 14;
constexpr double kTerminalMargins = 22.0;

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

/** A round step between times whose labels, as kTimeFormat writes them, do not touch. */
double timeStep(double from, double to, double letters)
{
    constexpr double kMaxSteps = 15.0;
    constexpr double kApart = 3.0;
    const auto widthAt = [](double time) { return fmt::format("{:.9g}", time).size(); };
    for (double steps = kMaxSteps;; --steps) {
        const double step = roundStep(to - from, steps);
        const double last = std::floor(to / step);
        const auto widest = std::max(widthAt(last * step), widthAt((last - 1.0) * step));
        if (steps <= 1.0 ||
            (static_cast<double>(widest) + kApart) * (to - from) / step <= letters) {
            return step;
        }
    }
}

/** Characters of UTF-8 text without the signs of an index. */
size_t widthOf(const std::string& text)
{
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](unsigned char c) {
        return (c & 0xC0U) != 0x80 && c != '_' && c != '{' && c != '}';
    }));
}

/** The text in lines that are no longer than that, if it can be, broken behind semicolons. */
std::vector<std::string> linesOf(const std::string& text, size_t letters)
{
    std::vector<std::string> lines;
    for (const std::string_view part : base::splitText(text, ';')) {
        const std::string more = lines.empty() ? "" : lines.back() + ";" + std::string(part);
        if (!lines.empty() && widthOf(more) <= letters) {
            lines.back() = more;
            continue;
        }
        if (!lines.empty()) {
            lines.back() += ";";
        }
        lines.emplace_back(base::trimmed(part));
    }
    return lines;
}

/** Writes the script; a class only to share what it grows from. */
class Script
{
public:
    Script(const Picture& picture, const Canvas& canvas)
        : mPicture(picture), mCanvas(canvas), mCaption(linesOf(picture.mCaption, kCaptionLetters))
    {
    }

    std::string draw();
    std::string drawOnTerminal();

private:
    struct CommandText
    {
        size_t mLine;
        bool mIsLate; ///< stands to the left of its command
        bool mIsPlaced;
    };

    void addData();
    void addCurves(const Panel& panel, const std::string& block);
    void addPlot(const Panel& panel, const std::string& block, double lineWidth);
    void place(double left, double right, double top, double bottom);
    void addHead();
    void addBar();
    void placeCommands();
    void addCommands(double top, double bottom);
    void addWhole();
    void addCommandLines();
    void addColumns();
    void addColumn(const WaveColumn& column, size_t index, double left, double right);
    void addPanelAxis(const Panel& panel, double steps);
    void addTimeAxis(double from, double to, double letters);
    void addAxisTitle(const std::string& title);
    std::string label(const std::string& text) const
    {
        return isOnTerminal() ? quoted(plain(text)) : labelled(text);
    }
    std::string titleOf(const Curve& curve) const;
    bool isOnTerminal() const { return mCanvas.mKind == Canvas::Kind::Terminal; }
    double heightOf(const Panel& panel) const;
    double headHeight() const;
    double pictureHeight() const;
    double panelsRight() const;
    template <typename... Args>
    void add(fmt::format_string<Args...> text, Args&&... args)
    {
        mText += fmt::format(text, std::forward<Args>(args)...);
    }

    const Picture& mPicture;
    const Canvas& mCanvas;
    const std::vector<std::string> mCaption; ///< line by line
    std::vector<CommandText> mCommandTexts;
    double mCommandLines = 0.0; ///< that they need
    std::string mText;
    double mTop = 0.0; ///< where the next thing is placed
};

double Script::headHeight() const
{
    return kHeadHeight + kCaptionHeight * static_cast<double>(mCaption.size() - 1);
}

double Script::pictureHeight() const
{
    double height = headHeight();
    if (!mPicture.mPlayed.empty() || !mPicture.mCommands.empty()) {
        height += kCommandHeight * mCommandLines + kBarHeight + kGap;
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
            block, i, lineWidth, colour, curve.mIsSecond ? " dt 2" : "", titleOf(curve));
    }
    mText += "\n";
}

/** Only on a terminal is the second signal in the key: no lighter colour tells it there. */
std::string Script::titleOf(const Curve& curve) const
{
    if (curve.mIsSecond && !isOnTerminal()) {
        return "notitle";
    }
    return "title " + label(curve.mLabel + (curve.mIsSecond ? " (2)" : ""));
}

void Script::addPanelAxis(const Panel& panel, double steps)
{
    mText += range("y", panel.mLow, panel.mHigh);
    add("set ytics {:.9g}\n", roundStep(panel.mHigh - panel.mLow, steps));
}

void Script::addTimeAxis(double from, double to, double letters)
{
    mText += range("x", from, to);
    add("set xtics {:.9g} nomirror format '{}'\n", timeStep(from, to, letters), kTimeFormat);
}

/** At a place of its own: gnuplot's would go further left the wider the numbers are. */
void Script::addAxisTitle(const std::string& title)
{
    add("set label 93 {} at screen {:.5f}, graph 0.5 center rotate by 90\n", quoted(title),
        kAxisTitle / kWidth);
}

void Script::addHead()
{
    const double height = pictureHeight();
    std::vector<std::string> lines;
    std::transform(mCaption.begin(), mCaption.end(), std::back_inserter(lines), quoted);
    add("set label 91 {} at screen 0.02, screen {:.5f} font ',{}' noenhanced\n",
        quoted(shortened(mPicture.mTitle, kTitleLetters)), 1.0 - 27.0 / height,
        mCanvas.mKind == Canvas::Kind::Png ? 14 : 21);
    add("set label 92 {} at screen 0.02, screen {:.5f} textcolor rgb '{}' noenhanced\n",
        fmt::join(lines, ".\"\\n\"."), 1.0 - 56.0 / height, kTextColour);
    mTop = headHeight();
}

/** Each text in the highest line that is free there; to the left of a late command. */
void Script::placeCommands()
{
    constexpr double kApart = 4.0; // letters
    const double secondsPerLetter =
        (mPicture.mEnd - mPicture.mBegin) / (panelsRight() - kLeft) * kLetterWidth;
    std::vector<double> ends; // of what stands in each line
    for (const GivenCommand& command : mPicture.mCommands) {
        const double width =
            (static_cast<double>(widthOf(command.mText)) + kApart) * secondsPerLetter;
        const bool isLate = command.mSeconds + width > mPicture.mEnd;
        const double begin = command.mSeconds - (isLate ? width : 0.0);
        auto line = std::find_if(ends.begin(), ends.end(), [&](double it) { return it <= begin; });
        if (line == ends.end() && ends.size() < kMaxCommandLines) {
            line = ends.insert(line, begin);
        }
        const bool isPlaced = line != ends.end();
        mCommandTexts.push_back({static_cast<size_t>(line - ends.begin()), isLate, isPlaced});
        if (isPlaced) {
            *line = begin + width;
        }
    }
    mCommandLines = static_cast<double>(ends.size());
}

/** Arrows pass behind the texts of others. */
void Script::addCommands(double top, double bottom)
{
    mText += "set style textbox opaque noborder margins 0.1, 0.1\n";
    for (size_t i = 0; i < mPicture.mCommands.size(); ++i) {
        const GivenCommand& command = mPicture.mCommands[i];
        const CommandText& text = mCommandTexts[i];
        const double y = 1.0 + (bottom - top - kBarHeight -
                                static_cast<double>(text.mLine) * kCommandHeight - 12.0) /
                                   kBarHeight;
        add("set arrow from {0:.9g}, {1:.5f} to {0:.9g}, 0 head filled size screen 0.006, 20 back "
            "lc rgb '{2}' lw 1.5\n",
            command.mSeconds, y, kMarkColour);
        if (text.mIsPlaced) {
            add("set label {} at {:.9g}, {:.5f} {} front boxed textcolor rgb '{}' noenhanced\n",
                quoted(command.mText), command.mSeconds, y,
                text.mIsLate ? "right offset -1, 0" : "left offset 1, 0", kMarkColour);
        }
    }
}

void Script::addBar()
{
    if (mPicture.mPlayed.empty() && mPicture.mCommands.empty()) {
        return;
    }
    const double bottom = mTop + kCommandHeight * mCommandLines + kBarHeight;
    const double width = panelsRight() - kLeft;
    place(kLeft, panelsRight(), bottom - kBarHeight, bottom);
    mText += "unset border\nunset tics\nset yrange [0:1]\n";
    if (!mPicture.mPlayed.empty()) {
        add("set label 'playing' at screen {:.5f}, graph 0.5 right textcolor rgb '{}'\n",
            (kLeft - 9.0) / kWidth, kTextColour);
    }
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
    addTimeAxis(mPicture.mBegin, mPicture.mEnd, (panelsRight() - kLeft) / kLetterWidth);
    mText += "set xtics format ''\n";
    add("set key at screen {:.5f}, graph 1.0 left top vertical samplen 1.2 spacing 1.15 reverse "
        "Left\n",
        (panelsRight() + 14.0) / kWidth);
    addCommandLines();
    for (size_t i = 0; i < mPicture.mWhole.size(); ++i) {
        const Panel& panel = mPicture.mWhole[i];
        const double height = heightOf(panel);
        place(kLeft, panelsRight(), mTop, mTop + height);
        addPanelAxis(panel, height > kHertzHeight ? 4.0 : 2.0);
        addAxisTitle(panel.mAxis);
        if (i + 1 == mPicture.mWhole.size()) {
            add("set xtics format '{}'\n", kTimeFormat);
            mText += "set xlabel 'time since the first sample, s' offset 0, 0.5\n";
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
    addTimeAxis(column.mFrom, column.mTo, (right - left) / kLetterWidth);
    if (column.mMark) {
        add("set arrow 1 from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead lc rgb '{1}' dt 3\n",
            *column.mMark, kTextColour);
    }
    double top = mTop + kColumnTitleHeight;
    for (size_t i = 0; i < column.mPanels.size(); ++i) {
        const Panel& panel = column.mPanels[i];
        const bool isLowest = i + 1 == column.mPanels.size();
        place(left, right, top, top + kWaveHeight);
        addPanelAxis(panel, kWaveSteps);
        if (index > 0) {
            mText += "unset key\nunset label 93\nset ytics format ''\n";
        } else {
            addAxisTitle(panel.mAxis);
            mText += "set ytics format '%g'\n";
        }
        mText += i == 0 ? "set title " + label(column.mTitle) + "\n" : "unset title\n";
        add("set xtics format '{}'\n", isLowest ? kTimeFormat : "");
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
    placeCommands();
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
    const double letters = mCanvas.mColumns - kTerminalMargins;
    addTimeAxis(mPicture.mBegin, mPicture.mEnd, letters);
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
        addTimeAxis(column.mFrom, column.mTo, letters);
        for (size_t j = 0; j < column.mPanels.size(); ++j) {
            addPanelAxis(column.mPanels[j], kWaveSteps);
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

} // namespace plot
