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
 * What a stream of sample blocks was like: how much, how evenly stamped, how fast and how far
 * from the wall clock it arrived. Knows nothing of where the blocks come from; memory does not
 * grow with the stream.
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
    std::int64_t smallestStepNs() const { return mSmallestStepNs; }
    std::int64_t largestStepNs() const { return mLargestStepNs; }

    /** Samples per second as the time stamps have it; 0 if they do not say. */
    double stepRate() const;

    /**
     * How fast the signal's time went by on arrival, as seconds of signal a second; 0 if unknown.
     * Blocks come in bursts, and where in a burst one looks would show. So it is the slope of a
     * line through the moments at which the stream was not ahead: where the writer has just slept
     * its lead away. A stream that never was there has the line through all its blocks.
     */
    double signalSpeed() const;

    /** Samples per second on arrival; 0 if unknown. */
    double arrivalRate() const { return stepRate() * signalSpeed(); }

    /**
     * How far a block's last time stamp is after (lead) and before (lag) its arrival, in
     * nanoseconds. Both have every block: one that leads has a lag of 0.
     */
    const Histogram& leadNs() const { return mLeadNs; }
    const Histogram& lagNs() const { return mLagNs; }

private:
    void addSample(std::int64_t stampNs);
    void addDistance(std::int64_t leadNs);

    std::uint64_t mBlocks = 0;
    std::uint64_t mSamples = 0;
    std::int64_t mFirstStampNs = 0;
    std::int64_t mLastStampNs = 0;
    Arrival mFirstArrival{};
    std::int64_t mSmallestStepNs = std::numeric_limits<std::int64_t>::max();
    std::int64_t mLargestStepNs = std::numeric_limits<std::int64_t>::min();
    LineFit mSignalAtAllBlocks;
    LineFit mSignalWhenNotAhead;
    Histogram mLeadNs;
    Histogram mLagNs;
};

} // namespace sandbox
