#include "plot/DrawnBlock.h"

namespace plot {

waveform::SignalBlock drawnBlock(const waveform::SignalBlock& whole, const DrawnChannels& channels,
                                 double shift)
{
    waveform::SignalBlock drawn;
    drawn.mFirst = whole.mFirst;
    drawn.resize(channels.count(), whole.size());
    for (size_t i = 0; i < whole.size(); ++i) {
        drawn.mSeconds[i] = whole.mSeconds[i] + shift;
    }
    for (const DrawnGroup& group : channels.groups()) {
        for (const DrawnChannel& channel : group.mChannels) {
            const std::vector<double>& values = whole.mValues[channel.mIndex];
            std::vector<double>& column = drawn.mValues[channel.mCurve];
            for (size_t i = 0; i < whole.size(); ++i) {
                column[i] = values[i] * channel.mFactor;
            }
        }
    }
    return drawn;
}

} // namespace plot
