#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/Envelope.h"

namespace plot {

/** The content of a picture, without its layout. Times are in s. */

/** Colours of curves: one for each conductor (L1, L2, L3, N), and that of the frequency. */
inline constexpr size_t kConductorColours = 4;
inline constexpr size_t kFrequencyColour = kConductorColours;

struct Curve
{
    std::string mLabel;         ///< may have an index, as "U_{L1}"; empty: not in the key
    size_t mColour;             ///< 0 to kFrequencyColour
    bool mIsSecond;             ///< of the second signal
    std::vector<Point> mPoints; ///< NaN interrupts the line
    bool mHasBars = false;      ///< from 0 to each point, instead of a line
};

/** Curves with a common axis. */
struct Panel
{
    std::string mAxis; ///< "V rms"
    double mLow;
    double mHigh; ///< above mLow
    std::vector<Curve> mCurves;
    bool mIsFrequency = false;
};

/** A time range in which one configuration was played. */
struct PlayedPart
{
    double mFrom;
    double mTo;
    int mConfiguration;
    std::string mText;
};

struct GivenCommand
{
    double mSeconds;
    std::string mText;
};

/** Waveforms around a moment, or another column of panels. */
struct WaveColumn
{
    std::string mTitle;
    double mFrom;
    double mTo;
    std::optional<double> mMark; ///< a line at this time
    std::vector<Panel> mPanels;  ///< one above the other
    bool mIsSquare = false;      ///< each panel is as high as wide; all columns or none
};

struct Picture
{
    std::string mTitle;
    std::string mCaption;
    double mBegin = 0.0; ///< of the whole; the first signal begins at 0
    double mEnd = 0.0;
    std::vector<PlayedPart> mPlayed;
    std::vector<GivenCommand> mCommands;
    std::vector<Panel> mWhole;         ///< over the whole, one above the other
    std::vector<WaveColumn> mColumns;  ///< side by side
    std::vector<std::string> mRemarks; ///< on oddities of the inputs, and on what is not shown
    std::string mBelow = "time since the first sample, s"; ///< title of the axis below the panels
};

} // namespace plot
