#include "judge/ArrivalCheck.h"

#include <fmt/format.h>

#include <cstdlib>

#include "waveform/RecordStamp.h"

namespace judge {

std::string OffTimeBlock::text() const
{
    const double seconds = static_cast<double>(std::abs(mLateNs)) / waveform::kSecondInNs;
    return mLateNs > 0 ? fmt::format(
                             "samples arrived up to {:.1f} s after their time stamps: the stream "
                             "stalled or was too slow, or the wall clock was set",
                             seconds)
                       : fmt::format(
                             "samples arrived up to {:.1f} s before their time stamps: the wall "
                             "clock was set back, and the stream waits for it",
                             seconds);
}

void ArrivalCheck::add(const explain::Event& event)
{
    if (event.mKind == explain::Event::Kind::Block && event.mAccepted && event.mSamples > 0) {
        mSamplesInEvents += event.mSamples;
        mBlocks.push_back({mSamplesInEvents, event.mTimeNs});
    }
}

bool ArrivalCheck::add(const SampleRecord* records, size_t count)
{
    bool isOffTime = false;
    for (; !mBlocks.empty() && mBlocks.front().mEnd <= mArrived + count; mBlocks.pop_front()) {
        const Block& block = mBlocks.front();
        if (block.mEnd > mArrived) { // otherwise its records came before the event
            isOffTime = check(block, records[block.mEnd - 1 - mArrived]) || isOffTime;
        }
    }
    mArrived += count;
    return isOffTime;
}

/** @return true if the block was off time */
bool ArrivalCheck::check(const Block& block, const SampleRecord& last)
{
    const qint64 stampNs = waveform::stampNsOf(last);
    const qint64 lateNs = block.mArrivalNs - stampNs;
    const bool isOffTime =
        (lateNs > kMaxLateNs || lateNs < -mMaxEarlyNs) && std::abs(lateNs) <= kMaxDriftNs;
    if (isOffTime) {
        mOffTime.push_back({block.mEnd - 1, stampNs, lateNs, mStall});
    } else {
        ++mStall;
    }
    return isOffTime;
}

std::optional<OffTimeBlock> ArrivalCheck::take(std::optional<qint64> untilStampNs)
{
    std::optional<OffTimeBlock> worst;
    while (!mOffTime.empty() && (!untilStampNs || mOffTime.front().mLastStampNs <= *untilStampNs)) {
        const OffTimeBlock& next = mOffTime.front();
        if (!worst || std::abs(next.mLateNs) > std::abs(worst->mLateNs)) {
            worst = next;
        }
        mTakenStall = next.mStall;
        mOffTime.pop_front();
    }
    return worst;
}

void ArrivalCheck::dropRest()
{
    while (!mOffTime.empty() && mOffTime.front().mStall == mTakenStall) {
        mOffTime.pop_front();
    }
}

} // namespace judge
