#include "plot/Waveforms.h"

#include <algorithm>

#include "base/ProgressLine.h"

namespace plot {

Waveforms::Waveforms(const DrawnChannels& channels, const std::vector<Stretch>& stretches,
                     size_t columns)
    : mStretches(stretches),
      mCurves(stretches.size(), Envelope(channels.count(), columns)),
      mValues(channels.count())
{
    for (const DrawnGroup& group : channels.groups()) {
        mChannels.insert(mChannels.end(), group.mChannels.begin(), group.mChannels.end());
    }
}

void Waveforms::read(waveform::SignalSource& source)
{
    double end = 0.0;
    for (const Stretch& stretch : mStretches) {
        end = std::max(end, stretch.mTo);
    }
    base::ProgressLine line("drawing");
    waveform::SignalBlock block;
    while (source.read(block) && block.mSeconds.front() <= end) {
        for (size_t i = 0; i < mStretches.size(); ++i) {
            addBlock(block, mStretches[i], &mCurves[i]);
        }
        line.show(source.progress());
    }
}

void Waveforms::addBlock(const waveform::SignalBlock& block, const Stretch& stretch,
                         Envelope* curves)
{
    const auto begin = block.mSeconds.begin();
    const auto first = std::lower_bound(begin, block.mSeconds.end(), stretch.mFrom);
    const auto last = std::upper_bound(first, block.mSeconds.end(), stretch.mTo);
    for (auto it = first; it != last; ++it) {
        const auto sample = static_cast<size_t>(it - begin);
        for (size_t i = 0; i < mChannels.size(); ++i) {
            mValues[i] = block.mValues[mChannels[i].mIndex][sample] * mChannels[i].mFactor;
        }
        curves->add(*it, mValues);
    }
}

} // namespace plot
