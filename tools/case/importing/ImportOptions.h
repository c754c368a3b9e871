#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "importing/ChannelMap.h"

namespace importing {

/** What the lines of the value file preserve. */
enum class LineTiming
{
    Phase,   ///< the phase: 360 lines are a period of the recording
    Nominal, ///< time, played at the nominal frequency
    Fixed    ///< time, played at a given frequency
};

struct ImportOptions
{
    MappingOptions mMapping;
    LineTiming mTiming = LineTiming::Phase;
    float mHz = 0.0F;            ///< for Fixed; must be playable
    std::optional<double> mFrom; ///< s in the recording; its beginning if it is not given
    std::optional<double> mTo;   ///< likewise its end
    size_t mBefore = 0;          ///< repetitions of the first period, before the recording
    size_t mAfter = 0;           ///< repetitions of the last period, after it
    bool mDoLoop = false;        ///< fade the last period into the first one; not with mAfter
    bool mClip = false;
    std::string mMadeBy;     ///< program and command line, for the comments
    std::string mSourceName; ///< of the recording, for the comments; empty: as it was opened
};

} // namespace importing
