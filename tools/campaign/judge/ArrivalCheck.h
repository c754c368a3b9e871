#pragma once

#include <deque>
#include <optional>
#include <string>

#include "SampleRecord.h"
#include "explain/Event.h"

namespace judge {

/** A block that arrived at another time than its stamps say. */
struct OffTimeBlock
{
    size_t mRecord = 0;      ///< its last one, in the run, from 0
    qint64 mLastStampNs = 0; ///< of that record
    qint64 mLateNs = 0;      ///< from that stamp to the arrival, on the wall clock; negative: early
    int mStall = 0;          ///< the same for blocks off time in a row: without one on time between

    /** What is wrong, in words. */
    std::string text() const;
};

/**
 * Compares when blocks arrived at the driver with the time stamps of their samples. Both are of the
 * wall clock, and neither depends on when they are read here: whoever is late in reading finds the
 * same.
 *
 * A device sees each block at the time of its last sample. The program is ahead of it by some
 * blocks, so a lag of more than a second means that the stream stood still, or was too slow.
 */
class ArrivalCheck
{
public:
    /** Five times what the program is ahead at 50 Hz; a busy machine delays it by less. */
    static constexpr qint64 kMaxLateNs = 1'000'000'000;

    /** Further off the program gives up its clock, which is found as a jump of the stamps. */
    static constexpr qint64 kMaxDriftNs = 60'000'000'000;

    /** @param maxLeadNs of the program, as it is planned */
    explicit ArrivalCheck(qint64 maxLeadNs) : mMaxEarlyNs(maxLeadNs + kMaxLateNs) {}

    /** Takes the event that happened next, before the records of that block. */
    void add(const explain::Event& event);

    /**
     * Takes the records that arrived next.
     * @return whether a block that ends among them is off time
     */
    bool add(const SampleRecord* records, size_t count);

    /**
     * Takes out the blocks that are off time and end up to that time stamp, all of them without
     * one.
     * @return the one that is off the most, if there is any
     */
    std::optional<OffTimeBlock> take(std::optional<qint64> untilStampNs);

    /** Takes out the blocks that are in a row with the last one that was taken out. */
    void dropRest();

private:
    struct Block
    {
        size_t mEnd; ///< after its last record
        qint64 mArrivalNs;
    };

    bool check(const Block& block, const SampleRecord& last);

    qint64 mMaxEarlyNs;
    size_t mSamplesInEvents = 0;
    size_t mArrived = 0;
    std::deque<Block> mBlocks; ///< whose last record has not arrived
    std::deque<OffTimeBlock> mOffTime;
    int mStall = 1;      ///< of the next block that is off time
    int mTakenStall = 0; ///< of the last block that was taken out
};

} // namespace judge
