#include "StreamStatistics.h"

#include <algorithm>

#include "SampleRecord.h"

namespace sandbox {

namespace {

std::int64_t stampOf(const SampleRecord& record)
{
    return std::int64_t{record.mSeconds} * kNanosecondsPerSecond + record.mNanoseconds;
}

} // namespace

void StreamStatistics::addBlock(const SampleRecord* records, std::size_t count,
                                const Arrival& arrival)
{
    if (mBlocks == 0) {
        mFirstArrival = arrival;
    }
    const double arrivedAt = inSeconds(arrival.mMonotonicNs - mFirstArrival.mMonotonicNs);
    if (mBlocks > 0 && mLastStampNs <= arrival.mRealtimeNs) {
        mSignalWhenNotAhead.add(arrivedAt, inSeconds(signalNs()));
    }
    ++mBlocks;
    std::for_each_n(records, count,
                    [this](const SampleRecord& record) { addSample(stampOf(record)); });
    addLead(mLastStampNs - arrival.mRealtimeNs);
    mSignalAtAnyBlock.add(arrivedAt, inSeconds(signalNs()));
}

void StreamStatistics::addSample(std::int64_t stampNs)
{
    if (mSamples == 0) {
        mFirstStampNs = stampNs;
    } else {
        mMinStepNs = std::min(mMinStepNs, stampNs - mLastStampNs);
        mMaxStepNs = std::max(mMaxStepNs, stampNs - mLastStampNs);
    }
    mLastStampNs = stampNs;
    ++mSamples;
}

void StreamStatistics::addLead(std::int64_t leadNs)
{
    mLeadNs.add(static_cast<std::uint64_t>(std::max<std::int64_t>(leadNs, 0)));
    mLagNs.add(static_cast<std::uint64_t>(std::max<std::int64_t>(-leadNs, 0)));
}

double StreamStatistics::samplingRate() const
{
    if (mSamples < 2 || signalNs() <= 0) {
        return 0;
    }
    return static_cast<double>(mSamples - 1) / inSeconds(signalNs());
}

double StreamStatistics::playbackSpeed() const
{
    const LineFit& line = mSignalWhenNotAhead.hasSlope() ? mSignalWhenNotAhead : mSignalAtAnyBlock;
    return line.hasSlope() ? line.slope() : 0;
}

} // namespace sandbox
