#pragma once

#include <deque>

#include "explain/Event.h"

namespace explain {

/**
 * What the events tell of the run so far: when each block of samples arrived, which commands were
 * given, and how the run ended. Events come in the order of their times.
 */
class RunEvents
{
public:
    void add(Event event);

    /** Nothing more will come. */
    void finish() { mIsFinished = true; }

    /** Whether what happened until this sample of the recording arrived is known. */
    bool covers(size_t sample) const { return mIsFinished || mSamples > sample; }

    /**
     * When the block with this sample of the recording arrived; nothing after the last block.
     * Requires: covers(), and no sample before that of the last call.
     */
    std::optional<qint64> arrivalNs(size_t sample);

    /** The oldest command that was not taken out, if it was given by then. */
    std::optional<Event> takeCommand(std::optional<qint64> untilNs);

    /** Samples that the driver accepted, and those that it refused after them. */
    size_t samples() const { return mSamples; }
    size_t refusedSamples() const { return mRefusedSamples; }

    /** Whether they are those of a driver, which tell how many samples there are. */
    bool haveBlocks() const { return mLastBlockNs || mIsRunOver; }

    /** When the last block arrived, accepted or refused; nothing before the first. */
    std::optional<qint64> lastBlockNs() const { return mLastBlockNs; }

    /** How the program died, in words; empty if it did not, or nothing is known of it. */
    const std::string& death() const { return mDeath; }

    bool isRunOver() const { return mIsRunOver; }

    /** Whether the program should have played until the run was over. */
    bool endedWhilePlaying() const { return mEndedWhilePlaying; }

    /** Of the last event, or of the end of the run. */
    qint64 lastTimeNs() const { return mLastTimeNs; }

private:
    struct Block
    {
        size_t mEnd; ///< after its last sample
        qint64 mArrivalNs;
    };

    void addBlock(const Event& block);
    void endRun(const Event& end);

    std::deque<Block> mBlocks; ///< that were not asked for yet
    std::deque<Event> mCommands;
    size_t mSamples = 0;
    size_t mRefusedSamples = 0;
    std::string mDeath;
    std::optional<qint64> mLastBlockNs;
    bool mIsRunOver = false;
    bool mEndedWhilePlaying = false;
    bool mIsFinished = false;
    qint64 mLastTimeNs = 0;
};

} // namespace explain
