#include "Clocks.h"

#include <chrono>

namespace sandbox {

namespace {

template <typename Clock>
std::int64_t nanosecondsOf()
{
    return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

} // namespace

std::int64_t realtimeNs()
{
    return nanosecondsOf<std::chrono::system_clock>();
}

std::int64_t monotonicNs()
{
    return nanosecondsOf<std::chrono::steady_clock>();
}

Arrival Arrival::now()
{
    return {realtimeNs(), monotonicNs()};
}

} // namespace sandbox
