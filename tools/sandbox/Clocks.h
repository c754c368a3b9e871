#pragma once

#include <cstdint>

namespace sandbox {

inline constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

/** The wall clock in nanoseconds since the epoch, with which time stamps are compared. */
std::int64_t realtimeNs();

/** A clock that cannot be set, in nanoseconds, for intervals. */
std::int64_t monotonicNs();

inline double inSeconds(std::int64_t nanoseconds)
{
    return static_cast<double>(nanoseconds) / static_cast<double>(kNanosecondsPerSecond);
}

/** When a write arrived, on both clocks. */
struct Arrival
{
    std::int64_t mRealtimeNs;
    std::int64_t mMonotonicNs;

    static Arrival now();
};

} // namespace sandbox
