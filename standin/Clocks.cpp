#include "Clocks.h"

#include <ctime>

namespace {

std::int64_t readClock(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t{time.tv_sec} * kNanosecondsPerSecond + time.tv_nsec;
}

} // namespace

std::int64_t realtimeNs()
{
    return readClock(CLOCK_REALTIME);
}

std::int64_t monotonicNs()
{
    return readClock(CLOCK_MONOTONIC);
}

Arrival Arrival::now()
{
    return {realtimeNs(), monotonicNs()};
}
