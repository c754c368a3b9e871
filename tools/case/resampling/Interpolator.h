#pragma once

#include <map>
#include <utility>
#include <vector>

#include "resampling/SampleTimes.h"
#include "resampling/SincKernel.h"

namespace resampling {

/** One channel of a source, whole. */
struct SourceColumn
{
    std::vector<double> mValues;
    double mSkewSeconds = 0.0; ///< how much later than its sample's time each value was taken
};

/**
 * The values of a source at any instant, band-limited: each segment of equal steps with a kernel
 * for its rate. Where the kernel reaches beyond a segment, it sees the neighbours through cubic
 * polynomials, and beyond the ends of the source its mirror image through the end's value.
 *
 * Borrows times and columns, which must outlive it. Not for several threads: it keeps weights.
 */
class Interpolator
{
public:
    /** By how much faster than the output a segment is. Making one is slow. */
    using Kernels = std::map<int, SincKernel>;

    /**
     * @param outputRate samples a second that are taken; decides what must be filtered away
     * @param kernels of the part of the source before this one, with the same rate
     */
    Interpolator(const SampleTimes& times, const std::vector<SourceColumn>& columns,
                 double outputRate, Kernels kernels = {});

    /**
     * @param seconds on the source's time; clamped to what it covers
     * @param values one per column
     */
    void valuesAt(double seconds, std::vector<double>& values);

    /** For the next part; none where there is no room for another one. No instant follows. */
    Kernels takeKernels();

private:
    using Segment = SampleTimes::Segment;

    const SincKernel* kernelFor(const Segment& segment);
    void prepare(double seconds);
    double valueNow(const std::vector<double>& column) const;
    double sumOverEdge(const std::vector<double>& column, long first) const;
    double virtualSample(const std::vector<double>& column, double seconds) const;
    std::vector<std::pair<double, double>> pointsAround(const std::vector<double>& column,
                                                        size_t sample) const;

    const SampleTimes& mTimes;
    const std::vector<SourceColumn>& mColumns;
    double mOutputRate;
    Kernels mKernels;

    /** Of the present instant. */
    const Segment* mSegment = nullptr;
    const SincKernel* mKernel = nullptr; ///< null: polynomials are used
    double mSeconds = 0.0;
    size_t mBefore = 0; ///< sample before the instant, counted in the segment
    bool mIsOnSample = false;
    std::vector<double> mWeights;
};

} // namespace resampling
