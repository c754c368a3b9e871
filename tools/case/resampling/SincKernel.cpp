#include "resampling/SincKernel.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace resampling {

namespace {

/**
 * Half the width in samples of the slower rate: wide enough for the narrow edge that the header
 * promises.
 */
constexpr double kHalfWidth = 44.0;

/**
 * Shape of a Kaiser window for ripples of -118 dB. The edge on either side of the cut-off is, as a
 * part of the slower rate: (118 - 8) / (2.285 * 2 pi) / (2 * kHalfWidth) / 2.
 */
constexpr double kShape = 12.04;
constexpr double kHalfEdge = 0.0435;

/**
 * Number of fractions in the table for a kernel of one source sample: linear interpolation between
 * them costs 1e-7 or less at the highest frequency.
 */
constexpr double kRows = 2048.0;

/** Below this ratio, aliases are accepted instead of summing more and more samples. */
constexpr double kMinRatio = 1e-3;

double sinc(double x)
{
    return std::abs(x) < 1e-12 ? 1.0 : std::sin(base::kPi * x) / (base::kPi * x);
}

/** @param x -1 to 1 over the window; 0 outside */
double kaiser(double x)
{
    const double root = 1.0 - x * x;
    return root <= 0.0
               ? 0.0
               : std::cyl_bessel_i(0.0, kShape * std::sqrt(root)) / std::cyl_bessel_i(0.0, kShape);
}

/** Scales the row so that a constant is reproduced exactly. */
void normalise(double* row, size_t width)
{
    double sum = 0.0;
    for (size_t i = 0; i < width; ++i) {
        sum += row[i];
    }
    std::transform(row, row + width, row, [sum](double weight) { return weight / sum; });
}
} // namespace

SincKernel::SincKernel(double ratio)
    : mRows(static_cast<size_t>(std::ceil(kRows * std::max(ratio, kMinRatio))))
{
    ratio = std::max(ratio, kMinRatio);
    const double cut = ratio < 1.0 ? ratio * (1.0 - 2.0 * kHalfEdge) : 1.0;
    const double reach = kHalfWidth / ratio;
    mHalfWidth = static_cast<size_t>(std::ceil(reach));
    const size_t width = 2 * mHalfWidth;
    mTable.resize((mRows + 1) * width);
    for (size_t row = 0; row <= mRows; ++row) {
        const double fraction = static_cast<double>(row) / static_cast<double>(mRows);
        double* const weights = &mTable[row * width];
        for (size_t i = 0; i < width; ++i) {
            const double x =
                fraction + static_cast<double>(mHalfWidth) - 1.0 - static_cast<double>(i);
            weights[i] = sinc(x * cut) * kaiser(x / reach);
        }
        normalise(weights, width);
    }
}

void SincKernel::weightsAt(double fraction, std::vector<double>& weights) const
{
    const size_t width = 2 * mHalfWidth;
    const double position = fraction * static_cast<double>(mRows);
    const size_t row = std::min(static_cast<size_t>(position), mRows - 1);
    const double share = position - static_cast<double>(row);
    const double* const lower = &mTable[row * width];
    const double* const upper = lower + width;
    weights.resize(width);
    for (size_t i = 0; i < width; ++i) {
        weights[i] = lower[i] + share * (upper[i] - lower[i]);
    }
}

} // namespace resampling
