#pragma once

#include <array>
#include <optional>
#include <vector>

#include "measure/HalfPeriods.h"
#include "measure/SampleHistory.h"

namespace measure {

/**
 * The rms of one period of each channel, every half period. The periods of a channel start at the
 * first zero crossing of its fundamental, and then follow each other without gaps, like the clock.
 */
class HalfPeriodRms
{
public:
    /** Takes the samples up to the end of the history, 360 per period. @return sorted by end */
    std::vector<HalfPeriodValues> take(const SampleHistory& samples, qint64 beginUtcNs);

    /** The first sample that is still needed. */
    size_t needed() const;

private:
    struct ChannelState
    {
        bool mHasBegun = false;
        size_t mNext = 0;                   ///< begin of the next half period
        std::optional<double> mLastSquares; ///< of the half period before
    };

    void takeChannel(size_t channel, const SampleHistory& samples, qint64 beginUtcNs,
                     std::vector<HalfPeriodValues>* values);

    std::array<ChannelState, kChannelCount> mChannels;
};

} // namespace measure
