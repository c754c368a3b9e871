#include "Histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sandbox {

namespace {

constexpr unsigned kBinBits = 7;
constexpr std::uint64_t kBinsPerOctave = std::uint64_t{1} << kBinBits;
constexpr std::size_t kBinCount = kBinsPerOctave * (64 - kBinBits + 1);

/** How many low bits of a value do not matter for its bin. */
unsigned droppedBits(std::uint64_t value)
{
    unsigned bits = 0;
    while ((value >> bits) >= 2 * kBinsPerOctave) {
        ++bits;
    }
    return bits;
}

std::size_t binOf(std::uint64_t value)
{
    const unsigned dropped = droppedBits(value);
    return static_cast<std::size_t>(dropped * kBinsPerOctave + (value >> dropped));
}

std::uint64_t upperBoundOf(std::size_t index)
{
    if (index < 2 * kBinsPerOctave) {
        return index;
    }
    const std::uint64_t dropped = index / kBinsPerOctave - 1;
    const std::uint64_t leading = index % kBinsPerOctave + kBinsPerOctave;
    return (leading << dropped) + ((std::uint64_t{1} << dropped) - 1);
}

} // namespace

Histogram::Histogram() : mBins(kBinCount) {}

void Histogram::add(std::uint64_t value)
{
    ++mBins[binOf(value)];
    ++mCount;
    mMax = std::max(mMax, value);
}

std::uint64_t Histogram::percentile(double percent) const
{
    const auto wanted =
        static_cast<std::uint64_t>(std::ceil(static_cast<double>(mCount) * percent / 100));
    std::uint64_t seen = 0;
    for (std::size_t index = 0; index < mBins.size(); ++index) {
        seen += mBins[index];
        if (seen > 0 && seen >= wanted) {
            return std::min(upperBoundOf(index), mMax);
        }
    }
    return mMax;
}

} // namespace sandbox
