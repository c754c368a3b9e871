#pragma once

#include <cstdint>

namespace sandbox {

/**
 * The straight line through points that come one by one, by least squares, in constant memory.
 * Updates means instead of plain sums, which would cancel in a long run.
 */
class LineFit
{
public:
    void add(double x, double y);

    /** Whether two different x have been seen, so that there is a slope. */
    bool hasSlope() const { return mVarianceX > 0; }

    /** Requires: hasSlope(). */
    double slope() const { return mCovariance / mVarianceX; }

private:
    std::uint64_t mCount = 0;
    double mMeanX = 0;
    double mMeanY = 0;
    double mVarianceX = 0;  ///< times the count
    double mCovariance = 0; ///< times the count
};

} // namespace sandbox
