#pragma once

#include <optional>
#include <string>

#include "run/Desk.h"

namespace run {

/**
 * Records the plays whose expected values are wanted: each from the gap before it up to the next
 * command, or for the length of a gap at most, so that the steady signal around it is there. What
 * does not pass is not kept. Borrows the desk.
 */
class PlayRecorder
{
public:
    /** Records of the steady signal after a play: 2 s at 60 Hz. */
    static constexpr size_t kMaxAfter = 43'200;

    explicit PlayRecorder(Desk& desk) : mDesk(desk) {}

    /** The gap before a play begins. @param name of its recording */
    void begin(std::string name) { mCurrent = std::move(name); }

    void add(const SampleRecord* records, size_t count);

    /** The play is over. @param isWanted else its recording is removed */
    void endPlay(bool isWanted);

    /** A command is sent: the steady signal after the play before is over. */
    void endBefore();

    /** No more records come from this run of the program; a play that is on has no end. */
    void stop();

private:
    Desk& mDesk;
    std::optional<std::string> mCurrent;
    std::optional<std::string> mBefore; ///< has ended, and the steady signal after it is recorded
    size_t mAfter = 0;                  ///< records since its end
};

} // namespace run
