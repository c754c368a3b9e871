#pragma once

#include <cstdint>

namespace sandbox {

/** Lets a few messages per second through and counts those that it holds back. */
class RateLimit
{
public:
    /** Whether a message may be printed at `monotonicNs`. */
    bool allows(std::int64_t monotonicNs);

    /** How many were held back since the last call. */
    std::uint64_t takeSuppressed();

private:
    std::int64_t mSecondBeganNs = 0;
    int mAllowedThisSecond = 0;
    std::uint64_t mSuppressed = 0;
};

} // namespace sandbox
