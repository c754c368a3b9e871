#pragma once

#include <QtGlobal>
#include <array>
#include <string>

#include "importing/ChannelMap.h"
#include "importing/MappedSignal.h"

namespace importing {

/** Rounds counts to the 32 bits of a record, and remembers what does not fit them. */
class CountLimiter
{
public:
    /** @return what fits: the nearest whole number, or the limit where there is none */
    std::array<qint32, kChannelCount> round(const Counts& counts, double seconds);

    /** Values that did not fit. */
    size_t clipped() const;

    /**
     * The channel and time of the first that did not fit, and the scale with which all would.
     * Requires: clipped() > 0.
     */
    std::string overflowMessage(const ChannelMap& map, const MappingOptions& options) const;

private:
    struct Overflow
    {
        size_t mCount = 0;
        double mFirstSeconds = 0.0;
        double mFirstCounts = 0.0;
        double mLargest = 0.0; ///< magnitude in counts
    };

    double fittingScale(const ChannelMap& map, channels::Quantity quantity, double scale) const;

    std::array<Overflow, kChannelCount> mOverflows;
};

} // namespace importing
