#include "Histogram.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {
constexpr double kResolution = 0.008;
constexpr std::uint64_t kExactBelow = 128;

Histogram histogramOf(const std::vector<std::uint64_t>& values)
{
    Histogram histogram;
    for (const std::uint64_t value : values) {
        histogram.add(value);
    }
    return histogram;
}
} // namespace

TEST(HistogramTest, EmptyIsZero)
{
    const Histogram histogram;
    EXPECT_EQ(histogram.count(), 0U);
    EXPECT_EQ(histogram.largest(), 0U);
    EXPECT_EQ(histogram.percentile(99), 0U);
}

TEST(HistogramTest, SmallValuesAreExact)
{
    Histogram histogram;
    for (std::uint64_t value = 1; value <= 100; ++value) {
        histogram.add(value);
    }
    EXPECT_EQ(histogram.count(), 100U);
    EXPECT_EQ(histogram.largest(), 100U);
    for (const int percent : {1, 50, 95, 99, 100}) {
        EXPECT_EQ(histogram.percentile(percent), static_cast<std::uint64_t>(percent));
    }
    EXPECT_EQ(histogram.percentile(0), 1U);
    EXPECT_EQ(histogram.percentile(49.5), 50U);
}

TEST(HistogramTest, RareLargeValueShowsInTheLastPercentileOnly)
{
    std::vector<std::uint64_t> values(99, 7);
    values.push_back(1'000'000);
    const Histogram histogram = histogramOf(values);
    EXPECT_EQ(histogram.percentile(99), 7U);
    EXPECT_EQ(histogram.percentile(99.5), 1'000'000U);
    EXPECT_EQ(histogram.largest(), 1'000'000U);
}

/** Each value beside one that is larger than all, so that it is seen through its class only. */
TEST(HistogramTest, EveryMagnitudeIsWithinItsResolution)
{
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    for (unsigned bit = 0; bit < 64; ++bit) {
        for (const std::uint64_t value : {(std::uint64_t{1} << bit) - 1, std::uint64_t{1} << bit,
                                          (std::uint64_t{3} << bit) / 2}) {
            const Histogram histogram = histogramOf({value, kLargest});
            const std::uint64_t median = histogram.percentile(50);
            const double excess = static_cast<double>(median) - static_cast<double>(value);
            EXPECT_GE(median, value);
            EXPECT_LE(excess, value < kExactBelow ? 0 : kResolution * static_cast<double>(value));
            EXPECT_EQ(histogram.percentile(100), kLargest);
        }
    }
}
