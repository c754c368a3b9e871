#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "Clocks.h"
#include "Histogram.h"
#include "LineFit.h"

struct SampleRecord;

namespace sandbox {

/**
 * Statistics of a stream of sample blocks: amount of data, regularity of the time stamps, speed of
 * the blocks and their distance from the wall clock. Independent of the source of the blocks; needs
 * constant memory.
 */
class StreamStatistics
{
public:
    /** Requires: count >= 1. */
    void addBlock(const SampleRecord* records, std::size_t count, const Arrival& arrival);

    std::uint64_t blocks() const { return mBlocks; }
    std::uint64_t samples() const { return mSamples; }

    /** Time stamps in nanoseconds since the epoch. Requires: a block. */
    std::int64_t firstStampNs() const { return mFirstStampNs; }
    std::int64_t lastStampNs() const { return mLastStampNs; }

    /** When the first block arrived. Requires: a block. */
    const Arrival& firstArrival() const { return mFirstArrival; }

    /** From the first time stamp to the last, in nanoseconds. */
    std::int64_t signalNs() const { return mLastStampNs - mFirstStampNs; }

    /** Between consecutive samples, across blocks too. Requires: two samples. */
    std::int64_t minStepNs() const { return mMinStepNs; }
    std::int64_t maxStepNs() const { return mMaxStepNs; }

    /** Samples per second by the time stamps; 0 if they do not increase. */
    double samplingRate() const;

    /**
     * Seconds of signal per second of real time; 0 if unknown. Blocks come in bursts, which must
     * not show in the result. So it is the slope of a line through the arrivals at which the
     * stream was not ahead of the wall clock: the writer had just slept until it lost its lead.
     * For a stream that was always ahead, the line goes through all arrivals.
     */
    double playbackSpeed() const;

    /** Samples per second on arrival; 0 if unknown. */
    double arrivalRate() const { return samplingRate() * playbackSpeed(); }

    /**
     * How far a block's last time stamp is after its arrival (lead) and before it (lag), in
     * nanoseconds. Each block counts in both: one that leads has a lag of 0.
     */
    const Histogram& leadNs() const { return mLeadNs; }
    const Histogram& lagNs() const { return mLagNs; }

private:
    void addSample(std::int64_t stampNs);
    void addLead(std::int64_t leadNs);

    std::uint64_t mBlocks = 0;
    std::uint64_t mSamples = 0;
    std::int64_t mFirstStampNs = 0;
    std::int64_t mLastStampNs = 0;
    Arrival mFirstArrival{};
    std::int64_t mMinStepNs = std::numeric_limits<std::int64_t>::max();
    std::int64_t mMaxStepNs = std::numeric_limits<std::int64_t>::min();
    LineFit mSignalAtAnyBlock;
    LineFit mSignalWhenNotAhead;
    Histogram mLeadNs;
    Histogram mLagNs;
};

} // namespace sandbox
