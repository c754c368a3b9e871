#pragma once

#include <QtGlobal>
#include <vector>

#include "comtrade/ComtradeRecords.h"
#include "waveform/SignalSource.h"

namespace comtrade {

/** Finds changes of states. Keeps only the first ones, so that memory is bounded. */
class StatusTracker
{
public:
    /** @param channels get their states and changes; borrowed, one for each status channel */
    explicit StatusTracker(std::vector<waveform::StatusChannel>* channels) : mChannels(channels) {}

    /**
     * Goes through the status words of the next samples.
     * @param block the samples, following those of the call before
     * @param seconds the time of each sample of the block
     */
    void add(const ComtradeBlock& block, const std::vector<double>& seconds);

private:
    void change(size_t word, unsigned bits, double seconds, bool isFirst);

    std::vector<waveform::StatusChannel>* mChannels;
    std::vector<quint16> mLast; ///< words of the last sample; empty before the first
    size_t mKept = 0;           ///< changes of all channels
};

} // namespace comtrade
