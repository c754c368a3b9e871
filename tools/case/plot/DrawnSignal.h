#pragma once

#include <memory>
#include <string>

#include "plot/Overview.h"
#include "plot/WaveformWindows.h"

namespace plot {

/**
 * A signal to be drawn: its drawn channels, its overview, and its waveforms in some windows. Reads
 * its source once, block by block, and owns it.
 */
class DrawnSignal
{
public:
    /**
     * @param sources source of each channel in an import of the signal; empty for no import
     * @param shift in s, added to its times
     * @param columns width of the picture
     */
    DrawnSignal(std::unique_ptr<waveform::SignalSource> source,
                const std::vector<std::string>& sources, double shift, size_t columns);

    /** @return false at the end */
    bool readBlock();

    /** The last block read. */
    const SharedBlock& block() const { return mBlock; }

    /** Time of the last read sample; before the first block, less than any time. */
    double readTo() const { return mReadTo; }
    bool isAtEnd() const { return mIsAtEnd; }
    double progress() const { return mSource->progress(); }

    const waveform::SignalDescription& description() const { return mSource->description(); }
    const DrawnChannels& channels() const { return mChannels; }
    const Overview& overview() const { return mOverview; }
    WaveformWindows& windows() { return mWindows; }

private:
    std::unique_ptr<waveform::SignalSource> mSource;
    double mShift;
    DrawnChannels mChannels;
    Overview mOverview;
    WaveformWindows mWindows;
    waveform::SignalBlock mWhole; ///< of all channels
    SharedBlock mBlock;
    double mReadTo;
    bool mIsAtEnd = false;
};

} // namespace plot
