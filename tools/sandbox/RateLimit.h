#pragma once

#include <cstdint>

namespace sandbox {

/** Lets a few messages of a kind through each second and counts the ones it holds back. */
class RateLimit
{
public:
    /** Whether the message that comes up at `monotonicNs` may be printed. */
    bool allows(std::int64_t monotonicNs);

    /** How many were held back since this was last asked. */
    std::uint64_t takeSuppressed();

private:
    std::int64_t mSecondBeganNs = 0;
    int mAllowedThisSecond = 0;
    std::uint64_t mSuppressed = 0;
};

} // namespace sandbox
