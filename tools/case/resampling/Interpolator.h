#pragma once

#include <map>
#include <utility>
#include <vector>

#include "resampling/SampleTimes.h"
#include "resampling/SincKernel.h"

namespace resampling {

/** All values of one channel of a source. */
struct SourceColumn
{
    std::vector<double> mValues;
    double mSkewSeconds = 0.0; ///< delay of each value after the time of its sample
};

/**
 * The values of a source at any instant, band-limited. Each segment of equal steps has a kernel for
 * its rate. If the kernel reaches beyond a segment, the adjacent ones are represented by cubic
 * polynomials, and beyond the ends of the source by its point reflection at the end's value.
 *
 * Borrows times and columns, which must outlive it. Not thread-safe: it caches weights.
 */
class Interpolator
{
public:
    /** Kernels by the ratio of a segment's rate to that of the output. Making one is slow. */
    using Kernels = std::map<int, SincKernel>;

    /**
     * @param outputRate samples per second that are requested; determines the filter
     * @param kernels of the previous part of the source, with the same rate
     */
    Interpolator(const SampleTimes& times, const std::vector<SourceColumn>& columns,
                 double outputRate, Kernels kernels = {});

    /**
     * @param seconds of the source; clamped to its range
     * @param values one per column
     */
    void valuesAt(double seconds, std::vector<double>& values);

    /** Hands the kernels to the next part; none if there are too many. Must be the last call. */
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

    /** State of the current instant. */
    const Segment* mSegment = nullptr;
    const SincKernel* mKernel = nullptr; ///< null: polynomials are used
    double mSeconds = 0.0;
    size_t mBefore = 0; ///< index in the segment of the sample before the instant
    bool mIsOnSample = false;
    std::vector<double> mWeights;
};

} // namespace resampling
