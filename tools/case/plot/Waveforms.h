#pragma once

#include <vector>

#include "plot/DrawnChannels.h"
#include "plot/Envelope.h"

namespace plot {

/** The samples of some stretches of a signal, no denser than the picture. */
class Waveforms
{
public:
    struct Stretch
    {
        double mFrom; ///< s
        double mTo;
    };

    /** @param columns that each stretch is wide in the picture */
    Waveforms(const DrawnChannels& channels, const std::vector<Stretch>& stretches, size_t columns);

    /** Reads a signal from its beginning up to the end of the last stretch. */
    void read(waveform::SignalSource& source);

    /** Of a drawn channel, in the unit of its group. */
    std::vector<Point> curve(size_t stretch, size_t channel) const
    {
        return mCurves[stretch].curve(channel);
    }

private:
    void addBlock(const waveform::SignalBlock& block, const Stretch& stretch, Envelope* curves);

    std::vector<DrawnChannel> mChannels;
    std::vector<Stretch> mStretches;
    std::vector<Envelope> mCurves; ///< of each stretch
    std::vector<double> mValues;   ///< of one sample
};

} // namespace plot
