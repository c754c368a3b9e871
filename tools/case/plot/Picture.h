#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/Envelope.h"

namespace plot {

/** What a picture shows, without a word of how it is drawn. Times are in s. */
struct Curve
{
    std::string mLabel; ///< may hold an index as "U_{L1}"
    size_t mColour;     ///< from 0 on, again after 3; curves of the same conductor share it
    bool mIsSecond;     ///< of the second signal
    std::vector<Point> mPoints;
};

/** Curves with a common axis. */
struct Panel
{
    std::string mAxis; ///< "V rms"
    double mLow;
    double mHigh; ///< above mLow
    std::vector<Curve> mCurves;
};

/** A stretch of the bar. */
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

/** Waveforms around a moment. */
struct WaveColumn
{
    std::string mTitle;
    double mFrom;
    double mTo;
    std::optional<double> mMark; ///< a line there
    std::vector<Panel> mPanels;  ///< one above the other
};

struct Picture
{
    std::string mTitle;
    std::string mCaption;
    double mBegin = 0.0; ///< of the whole; the first signal begins at 0
    double mEnd = 0.0;
    std::vector<PlayedPart> mPlayed;
    std::vector<GivenCommand> mCommands;
    std::vector<Panel> mWhole;        ///< over the whole, one above the other
    std::vector<WaveColumn> mColumns; ///< side by side
};

} // namespace plot
