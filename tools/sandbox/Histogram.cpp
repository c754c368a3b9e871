#include "Histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace sandbox {

namespace {

constexpr unsigned kClassBits = 7;
constexpr std::uint64_t kClassesPerOctave = std::uint64_t{1} << kClassBits;
constexpr std::size_t kClassCount = kClassesPerOctave * (64 - kClassBits + 1);

/** How many low bits of a value its class does not tell apart. */
unsigned droppedBits(std::uint64_t value)
{
    unsigned bits = 0;
    while ((value >> bits) >= 2 * kClassesPerOctave) {
        ++bits;
    }
    return bits;
}

std::size_t classOf(std::uint64_t value)
{
    const unsigned dropped = droppedBits(value);
    return static_cast<std::size_t>(dropped * kClassesPerOctave + (value >> dropped));
}

std::uint64_t largestOf(std::size_t index)
{
    if (index < 2 * kClassesPerOctave) {
        return index;
    }
    const std::uint64_t dropped = index / kClassesPerOctave - 1;
    const std::uint64_t leading = index % kClassesPerOctave + kClassesPerOctave;
    return (leading << dropped) + ((std::uint64_t{1} << dropped) - 1);
}

} // namespace

Histogram::Histogram() : mClasses(kClassCount) {}

void Histogram::add(std::uint64_t value)
{
    ++mClasses[classOf(value)];
    ++mCount;
    mLargest = std::max(mLargest, value);
}

std::uint64_t Histogram::percentile(double percent) const
{
    const auto wanted =
        static_cast<std::uint64_t>(std::ceil(static_cast<double>(mCount) * percent / 100));
    std::uint64_t seen = 0;
    for (std::size_t index = 0; index < mClasses.size(); ++index) {
        seen += mClasses[index];
        if (seen > 0 && seen >= wanted) {
            return std::min(largestOf(index), mLargest);
        }
    }
    return mLargest;
}

} // namespace sandbox
