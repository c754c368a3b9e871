#pragma once

#include <array>
#include <vector>

#include "importing/ChannelMap.h"
#include "importing/RecordedSignal.h"
#include "resampling/Interpolator.h"

namespace importing {

/** The eight values of one instant, in counts, not rounded yet. */
using Counts = std::array<double, kChannelCount>;

/** The device's channels at any instant of a recording. Borrows its arguments. */
class MappedSignal
{
public:
    /** @param linesPerSecond number of instants per second that will be requested */
    MappedSignal(const RecordedSignal& recorded, const resampling::SampleTimes& times,
                 const ChannelMap& map, double linesPerSecond);

    /** @param seconds of the recording; clamped to its range */
    Counts countsAt(double seconds);

private:
    struct Weight
    {
        size_t mChannel;
        size_t mColumn;
        double mCounts;
    };

    resampling::Interpolator mInterpolator;
    std::vector<Weight> mWeights;
    std::vector<double> mValues; ///< of the columns, at the present instant
};

} // namespace importing
