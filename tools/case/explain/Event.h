#pragma once

#include <QtGlobal>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace explain {

/** A line of vx-sandbox --events or vx-control --events, with the fields that the judge needs. */
struct Event
{
    enum class Kind
    {
        Block,      ///< a write of samples to the driver
        Command,    ///< for the control FIFO
        ProgramEnd, ///< the program exited or was killed
        RunEnd,     ///< always the last line of the sandbox
        Other
    };

    Kind mKind = Kind::Other;
    qint64 mTimeNs = 0;    ///< since the epoch
    bool mAccepted = true; ///< Block: by the driver; Command: it was written
    size_t mSamples = 0;   ///< of Block
    /**
     * Command: its text. ProgramEnd: how it died, in words; empty if it was stopped at the end of
     * the run, or exited with status 0. RunEnd: the reason.
     */
    std::string mText;
    std::string mReason;               ///< Command: why it was not written
    std::vector<std::string> mRemarks; ///< ProgramEnd and RunEnd: no stream faults
};

/** No value if the line is not an event. */
std::optional<Event> parseEvent(std::string_view line);

} // namespace explain
