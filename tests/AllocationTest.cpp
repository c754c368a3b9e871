#include <gtest/gtest.h>

#include "AllocationCounter.h"
#include "WriterFixture.h"

namespace {
class AllocationTest : public WriterFixture
{
};

/** Steps, sleeps, 10-second marks and side records included: 22 s of play from one heap. */
TEST_F(AllocationTest, PlayingAllocatesNothing)
{
    constexpr int kPasses = 100;
    startWriter();
    InputValues values = items(11 * kSamplesPerPeriod);
    mSystem.mSleeps.reserve(kPasses + 1);
    play(values);
    const size_t before = allocationsSoFar();
    for (int pass = 0; pass < kPasses; ++pass) {
        ASSERT_EQ(play(values), 1);
    }
    EXPECT_EQ(allocationsSoFar(), before);
    EXPECT_GT(before, 0U) << "allocations are counted";
    EXPECT_EQ(mSystem.mSleeps.size(), kPasses + 1U);
}
} // namespace
