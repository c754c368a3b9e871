#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace base {

/** Sum of the products. Four sums side by side, so that no addition waits for the one before it. */
inline double dotProduct(const double* a, const double* b, size_t count)
{
    std::array<double, 4> sums{};
    const size_t whole = count - count % sums.size();
    for (size_t i = 0; i < whole; i += sums.size()) {
        for (size_t lane = 0; lane < sums.size(); ++lane) {
            sums[lane] += a[i + lane] * b[i + lane];
        }
    }
    for (size_t i = whole; i < count; ++i) {
        sums[0] += a[i] * b[i];
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

inline double sumOfSquares(const double* values, size_t count)
{
    return dotProduct(values, values, count);
}

/** 0 for no value. */
inline double rootMeanSquare(const double* values, size_t count)
{
    return count == 0 ? 0.0 : std::sqrt(sumOfSquares(values, count) / static_cast<double>(count));
}

inline double rootMeanSquare(const std::vector<double>& values)
{
    return rootMeanSquare(values.data(), values.size());
}

} // namespace base
