#pragma once

#include <QtGlobal>
#include <deque>
#include <optional>
#include <string>

#include "base/InputFile.h"

namespace explain {

/** A command that was written into the control FIFO. */
struct SentCommand
{
    std::string mText;
    qint64 mArrivalNs; ///< since the epoch
};

/**
 * What vx-sandbox --events wrote: when each block of samples arrived, and which commands were
 * given. Read once along with the recording, in memory that does not depend on their length.
 */
class EventTimeline
{
public:
    /** @throws CaseError when the file cannot be read. */
    explicit EventTimeline(const std::string& path);

    /**
     * When the block with this sample of the recording arrived; nothing behind the last block.
     * The commands before it are in commands() then. Requires: no sample before that of the last
     * call.
     */
    std::optional<qint64> arrivalNs(size_t sample);

    /** Commands that were given so far and not taken out by the caller, oldest first. */
    std::deque<SentCommand>& commands() { return mCommands; }

    /** Reads what is left. */
    void finish();

    /** Samples in the blocks read so far. */
    size_t samples() const { return mSamples; }

private:
    bool readLine();

    base::InputFile mFile;
    size_t mLineNumber = 0;
    size_t mSamples = 0;
    qint64 mArrivalNs = 0; ///< of the last block read
    std::deque<SentCommand> mCommands;
};

} // namespace explain
