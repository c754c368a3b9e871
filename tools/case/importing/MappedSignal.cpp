#include "importing/MappedSignal.h"

namespace importing {

MappedSignal::MappedSignal(const RecordedSignal& recorded, const resampling::SampleTimes& times,
                           const ChannelMap& map, double linesPerSecond)
    : mInterpolator(times, recorded.mColumns, linesPerSecond)
{
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        const MappedChannel& mapped = map.mChannels[channel];
        for (const MappedChannel::Term& term : mapped.mTerms) {
            mWeights.push_back(
                {channel, recorded.columnOf(term.mSource), term.mFactor * mapped.mCounts});
        }
    }
}

Counts MappedSignal::countsAt(double seconds)
{
    mInterpolator.valuesAt(seconds, mValues);
    Counts counts{};
    for (const Weight& weight : mWeights) {
        counts[weight.mChannel] += weight.mCounts * mValues[weight.mColumn];
    }
    return counts;
}

} // namespace importing
