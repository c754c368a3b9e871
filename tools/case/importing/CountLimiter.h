#pragma once

#include <QtGlobal>
#include <array>
#include <string>

#include "importing/ChannelMap.h"
#include "importing/MappedSignal.h"

namespace importing {

/** Rounds counts to the 32 bits of a record, and keeps track of those that do not fit. */
class CountLimiter
{
public:
    /** @return the nearest whole numbers, limited to 32 bits */
    std::array<qint32, kChannelCount> round(const Counts& counts, double seconds);

    /** Number of values that did not fit. */
    size_t clipped() const;

    /**
     * The channel and time of the first value that did not fit, and the scale at which all would
     * fit.
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
