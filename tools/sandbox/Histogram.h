#pragma once

#include <cstdint>
#include <vector>

namespace sandbox {

/**
 * Counts values of any 64-bit size in bounded memory (58 KiB): every power of two is divided into
 * 128 equal bins, so that a percentile is right within 0.8 %. Values below 128 are exact.
 */
class Histogram
{
public:
    Histogram();

    void add(std::uint64_t value);

    std::uint64_t count() const { return mCount; }

    /** The exact maximum; 0 if there is no value. */
    std::uint64_t max() const { return mMax; }

    /**
     * The value that `percent` of all values do not exceed, rounded up within its bin; 0 if
     * there is no value. Requires: 0 <= percent <= 100.
     */
    std::uint64_t percentile(double percent) const;

private:
    std::vector<std::uint64_t> mBins;
    std::uint64_t mCount = 0;
    std::uint64_t mMax = 0;
};

} // namespace sandbox
