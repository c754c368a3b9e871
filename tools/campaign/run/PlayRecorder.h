#pragma once

#include <optional>
#include <string>

#include "run/Desk.h"

namespace run {

/**
 * Records the plays that need expected values, with the steady signal around them. A recording
 * lasts from the gap before the play to the next command, or to kMaxAfter records after the play.
 * Recordings of plays that did not pass are removed. Borrows the desk.
 */
class PlayRecorder
{
public:
    /** Limit of records of the steady signal after a play: 2 s at 60 Hz. */
    static constexpr size_t kMaxAfter = 43'200;

    explicit PlayRecorder(Desk& desk) : mDesk(desk) {}

    /** The gap before a play begins. @param name of its recording */
    void begin(std::string name) { mCurrent = std::move(name); }

    void add(const SampleRecord* records, size_t count);

    /** Ends the play. @param isWanted whether to keep its recording; otherwise it is removed */
    void endPlay(bool isWanted);

    /** Ends the recording of the previous play, before the next command is sent. */
    void endBefore();

    /** Ends all recordings at the end of the program; the current play has no end. */
    void stop();

private:
    Desk& mDesk;
    std::optional<std::string> mCurrent;
    std::optional<std::string> mBefore; ///< has ended, and the steady signal after it is recorded
    size_t mAfter = 0;                  ///< records since its end
};

} // namespace run
