#include "resampling/Interpolator.h"

#include <algorithm>
#include <cmath>

#include "base/Sums.h"

namespace resampling {

namespace {
/** A shorter segment, such as a gap, is bridged by polynomials: the kernel is 88 samples wide. */
constexpr size_t kShortestSegment = 16;

constexpr size_t kCubicPoints = 4;

/** Rates of which a kernel is kept, 1 % apart: each takes some 1.5 MB. */
constexpr size_t kMaxKernels = 16;
constexpr double kKernelsPerOctave = 64.0;

/** Rates that differ by less share a kernel, in 1/64 octave: about 1 %, as a drifting frequency or
 * a truncated step makes them differ. */
constexpr double kKernelTolerance = 0.9;

/** How near an instant is to a sample that coincides with it, in steps. */
constexpr double kCoincidence = 1e-7;

/** The polynomial through points of any distance; points at the same x all count. */
double polynomial(const std::vector<std::pair<double, double>>& points, double at)
{
    double sum = 0.0;
    for (const auto& [x, y] : points) {
        double product = y;
        for (const auto& [other, ignored] : points) {
            product *= other == x ? 1.0 : (at - other) / (x - other);
        }
        sum += product;
    }
    return sum;
}
} // namespace

Interpolator::Interpolator(const SampleTimes& times, const std::vector<SourceColumn>& columns,
                           double outputRate, Kernels kernels)
    : mTimes(times), mColumns(columns), mOutputRate(outputRate), mKernels(std::move(kernels))
{
}

Interpolator::Kernels Interpolator::takeKernels()
{
    return mKernels.size() < kMaxKernels ? std::move(mKernels) : Kernels();
}

void Interpolator::valuesAt(double seconds, std::vector<double>& values)
{
    values.resize(mColumns.size());
    double skew = 0.0;
    for (size_t column = 0; column < mColumns.size(); ++column) {
        if (column == 0 || mColumns[column].mSkewSeconds != skew) {
            skew = mColumns[column].mSkewSeconds;
            prepare(std::clamp(seconds - skew, mTimes.begin(), mTimes.end()));
        }
        values[column] = valueNow(mColumns[column].mValues);
    }
}

/** None for a segment that is too short, and none for the many rates of wild time stamps. */
const SincKernel* Interpolator::kernelFor(const Segment& segment)
{
    if (segment.sampleCount() < kShortestSegment) {
        return nullptr;
    }
    const double excess = std::log2(std::max(1.0 / (segment.mStep * mOutputRate), 1.0));
    const int key = static_cast<int>(std::ceil(excess * kKernelsPerOctave - kKernelTolerance));
    const auto found = mKernels.find(key);
    if (found != mKernels.end()) {
        return &found->second;
    }
    if (mKernels.size() == kMaxKernels) {
        return nullptr;
    }
    return &mKernels.emplace(key, SincKernel(std::exp2(-key / kKernelsPerOctave))).first->second;
}

void Interpolator::prepare(double seconds)
{
    mSeconds = seconds;
    const Segment& segment = mTimes.segmentAt(seconds);
    if (&segment != mSegment) {
        mSegment = &segment;
        mKernel = kernelFor(segment);
    }
    const double steps = std::max((seconds - segment.mStart) / segment.mStep, 0.0);
    mBefore = static_cast<size_t>(steps + kCoincidence);
    const double fraction = std::max(steps - static_cast<double>(mBefore), 0.0);
    mIsOnSample = fraction < kCoincidence && mBefore < segment.sampleCount();
    if (mKernel != nullptr && !mIsOnSample) {
        mKernel->weightsAt(fraction, mWeights);
    }
}

double Interpolator::valueNow(const std::vector<double>& column) const
{
    if (mIsOnSample) {
        return column[mSegment->mFirst + mBefore];
    }
    if (mKernel == nullptr) {
        return virtualSample(column, mSeconds);
    }
    const auto half = static_cast<long>(mKernel->halfWidth());
    const long first = static_cast<long>(mBefore) + 1 - half;
    const bool isInside =
        first >= 0 && first + 2 * half <= static_cast<long>(mSegment->sampleCount());
    return isInside ? base::dotProduct(&column[mSegment->mFirst + static_cast<size_t>(first)],
                                       mWeights.data(), mWeights.size())
                    : sumOverEdge(column, first);
}

double Interpolator::sumOverEdge(const std::vector<double>& column, long first) const
{
    const auto count = static_cast<long>(mSegment->sampleCount());
    double sum = 0.0;
    for (size_t i = 0; i < mWeights.size(); ++i) {
        const long sample = first + static_cast<long>(i);
        const bool isInside = sample >= 0 && sample < count;
        sum += mWeights[i] *
               (isInside ? column[mSegment->mFirst + static_cast<size_t>(sample)]
                         : virtualSample(column, mSegment->mStart + static_cast<double>(sample) *
                                                                        mSegment->mStep));
    }
    return sum;
}

/** What the source would have at a time between its samples, or beyond its ends. */
double Interpolator::virtualSample(const std::vector<double>& column, double seconds) const
{
    if (seconds < mTimes.begin()) {
        const double mirrored = std::min(2.0 * mTimes.begin() - seconds, mTimes.end());
        return 2.0 * column.front() - virtualSample(column, mirrored);
    }
    if (seconds > mTimes.end()) {
        const double mirrored = std::max(2.0 * mTimes.end() - seconds, mTimes.begin());
        return 2.0 * column.back() - virtualSample(column, mirrored);
    }
    const Segment& segment = mTimes.segmentAt(seconds);
    const auto index =
        static_cast<size_t>(std::max((seconds - segment.mStart) / segment.mStep, 0.0));
    const size_t sample = std::min(segment.mFirst + index, segment.mLast);
    return polynomial(pointsAround(column, sample), seconds);
}

std::vector<std::pair<double, double>> Interpolator::pointsAround(const std::vector<double>& column,
                                                                  size_t sample) const
{
    const size_t count = std::min(kCubicPoints, mTimes.sampleCount());
    const size_t first = std::min(sample > 0 ? sample - 1 : 0, mTimes.sampleCount() - count);
    std::vector<std::pair<double, double>> points;
    for (size_t i = first; i < first + count; ++i) {
        points.emplace_back(mTimes.timeOf(i), column[i]);
    }
    return points;
}

} // namespace resampling
