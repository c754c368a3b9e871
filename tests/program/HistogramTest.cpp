#include "Histogram.h"

#include <gtest/gtest.h>

#include <limits>

TEST(HistogramTest, PercentilesOfSmallValuesAreExact)
{
    sandbox::Histogram histogram;
    EXPECT_EQ(histogram.percentile(99), 0U);
    for (std::uint64_t value = 1; value <= 99; ++value) {
        histogram.add(value);
    }
    histogram.add(1'000'000);
    EXPECT_EQ(histogram.count(), 100U);
    EXPECT_EQ(histogram.max(), 1'000'000U);
    for (const auto& [percent, value] : {std::pair(0.0, 1U), std::pair(49.5, 50U),
                                         std::pair(99.0, 99U), std::pair(99.5, 1'000'000U)}) {
        EXPECT_EQ(histogram.percentile(percent), value) << percent;
    }
}

/** With a second, larger value, so that the value is read from its bin and not as the maximum. */
TEST(HistogramTest, EveryMagnitudeIsWithinItsResolution)
{
    for (unsigned bit = 0; bit < 64; ++bit) {
        for (const std::uint64_t value : {(std::uint64_t{1} << bit) - 1, std::uint64_t{1} << bit,
                                          (std::uint64_t{3} << bit) / 2}) {
            sandbox::Histogram histogram;
            histogram.add(value);
            histogram.add(std::numeric_limits<std::uint64_t>::max());
            EXPECT_GE(histogram.percentile(50), value);
            EXPECT_LE(histogram.percentile(50) - value, value < 128 ? 0 : value / 125);
        }
    }
}
