#pragma once

#include <vector>

#include "measure/Measurement.h"

namespace measure {

/**
 * Aggregates the rows of windows of 10/12 periods over a longer interval, as IEC 61000-4-30 does:
 * the root of the mean of the squares of each value, also if it is a percentage. The standard has
 * no aggregation of power: powers are averaged, so that they agree with the energy, and the power
 * factor is the ratio of these averages.
 *
 * A value that some of the windows do not have (a percentage in an interruption) is that of the
 * others.
 */
class WindowMeans
{
public:
    /** Takes a row of a window. */
    void add(const Measurement& row);

    /** Outputs the values of the interval that ends at this time, and begins the next one. */
    void end(Interval interval, qint64 utcNs, MeasurementOutput& output);

private:
    struct Mean
    {
        RowKind mKind;
        Channel mChannel;
        double mSum;
        size_t mCount;
    };

    Mean& meanOf(const Measurement& row);

    std::vector<Mean> mMeans;
    size_t mNext = 0; ///< the one that probably belongs to the next row
};

} // namespace measure
