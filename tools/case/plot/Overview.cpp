#include "plot/Overview.h"

#include <algorithm>
#include <cmath>

#include "base/Sums.h"

namespace plot {

Overview::Overview(const waveform::SignalDescription& description, const DrawnChannels& channels,
                   size_t columns)
    : mRms(channels.count(), columns),
      mHertz(1, columns),
      mTrack(std::min(channels.count(), DrawnChannels::kMaxOfEach)),
      mChanges(channels),
      mPeriods(description, channels.count(),
               [this](const Period& last, const Period& period) { take(last, period); }),
      mRmsOfPeriod(channels.count())
{
}

void Overview::add(const waveform::SignalBlock& block)
{
    mPeriods.add(block);
    mEarliestNext = mPeriods.begin();
    mBegin = block.mFirst == 0 ? block.mSeconds.front() : mBegin;
    mEnd = block.mSeconds.back();
}

void Overview::take(const Period& last, const Period& period)
{
    if (mFirstPeriod == 0.0) {
        mFirstPeriod = period.length();
    }
    for (size_t i = 0; i < mRmsOfPeriod.size(); ++i) {
        mRmsOfPeriod[i] = base::rootMeanSquare(period.mValues[i]);
    }
    mRms.add(period.middle(), mRmsOfPeriod);
    FrequencyTrack::Value value{};
    if (mTrack.add(last, period, &value)) {
        mHertz.add(value.mSeconds, {value.mHertz});
    }
    mChanges.add(last, period, mRmsOfPeriod);
}

} // namespace plot
