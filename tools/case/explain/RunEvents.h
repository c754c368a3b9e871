#pragma once

#include <deque>

#include "explain/Event.h"

namespace explain {

/**
 * Facts from the events of the run so far: when each block of samples arrived, which commands were
 * given, and how the run ended. Requires: events in the order of their times.
 */
class RunEvents
{
public:
    void add(Event event);

    /** No more events will be added. */
    void finish() { mIsFinished = true; }

    /** Whether all events up to the arrival of this sample are known. */
    bool covers(size_t sample) const { return mIsFinished || mSamples > sample; }

    /**
     * When the block with this sample of the recording arrived; nothing after the last block.
     * Requires: covers(), and no sample before that of the last call.
     */
    std::optional<qint64> arrivalNs(size_t sample);

    /** The oldest command that was not taken yet, if it was given by this time. */
    std::optional<Event> takeCommand(std::optional<qint64> untilNs);

    /** Samples that the driver accepted; refusedSamples() are those refused after them. */
    size_t samples() const { return mSamples; }
    size_t refusedSamples() const { return mRefusedSamples; }

    /** Whether the events are those of a driver, which include the number of samples. */
    bool haveBlocks() const { return mLastBlockNs || mIsRunOver; }

    /** When the last block arrived, accepted or refused; nothing before the first. */
    std::optional<qint64> lastBlockNs() const { return mLastBlockNs; }

    /** How the program died, in words; empty if it did not, or if that is unknown. */
    const std::string& death() const { return mDeath; }

    bool isRunOver() const { return mIsRunOver; }

    /** Whether the program should have played until the end of the run. */
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
