#pragma once

#include <deque>
#include <optional>
#include <string>

#include "SampleRecord.h"
#include "explain/Event.h"

namespace judge {

/** A block that arrived much later or earlier than its time stamps. */
struct OffTimeBlock
{
    size_t mRecord = 0;      ///< number of its last record in the run, from 0
    qint64 mLastStampNs = 0; ///< of that record
    qint64 mLateNs = 0;      ///< from that stamp to the arrival, on the wall clock; negative: early
    int mStall = 0;          ///< the same number for all off-time blocks of one stall

    /** The finding in words. */
    std::string text() const;
};

/**
 * Compares the times at which blocks arrived at the driver with the time stamps of their samples.
 * Both are from the wall clock. Neither depends on when they are read here, so reading them late
 * does not change the result.
 *
 * A device sees each block at the time of its last sample. The program is some blocks ahead of it,
 * so a lag of more than a second means that the stream stalled or was too slow.
 */
class ArrivalCheck
{
public:
    /** Five times the lead of the program at 50 Hz; a busy machine delays it by less. */
    static constexpr qint64 kMaxLateNs = 1'000'000'000;

    /** Beyond it the program resets its clock, which is found as a jump of the time stamps. */
    static constexpr qint64 kMaxDriftNs = 60'000'000'000;

    /** @param maxLeadNs planned lead of the program */
    explicit ArrivalCheck(qint64 maxLeadNs) : mMaxEarlyNs(maxLeadNs + kMaxLateNs) {}

    /** Adds the next event. Add that of a block before its records. */
    void add(const explain::Event& event);

    /**
     * Adds the next records.
     * @return whether a block that ends among them is off time
     */
    bool add(const SampleRecord* records, size_t count);

    /**
     * Removes the off-time blocks that end up to that time stamp; all of them without one.
     * @return the one with the largest deviation, if there is any
     */
    std::optional<OffTimeBlock> take(std::optional<qint64> untilStampNs);

    /** Removes the rest of the stall that the last removed block is of. */
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
    std::deque<Block> mBlocks; ///< blocks whose last record has not arrived
    std::deque<OffTimeBlock> mOffTime;
    int mStall = 1;      ///< number of the next stall; each on-time block begins a new one
    int mTakenStall = 0; ///< of the last block that was taken out
};

} // namespace judge
