#include "RateLimit.h"

#include <utility>

#include "Clocks.h"

namespace sandbox {

namespace {

constexpr int kMessagesPerSecond = 5;

} // namespace

bool RateLimit::allows(std::int64_t monotonicNs)
{
    if (monotonicNs - mSecondBeganNs >= kNanosecondsPerSecond) {
        mSecondBeganNs = monotonicNs;
        mAllowedThisSecond = 0;
    }
    if (mAllowedThisSecond == kMessagesPerSecond) {
        ++mSuppressed;
        return false;
    }
    ++mAllowedThisSecond;
    return true;
}

std::uint64_t RateLimit::takeSuppressed()
{
    return std::exchange(mSuppressed, 0);
}

} // namespace sandbox
