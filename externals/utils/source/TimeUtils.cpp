#include "TimeUtils.h"

#include <cerrno>
#include <string>
#include <utility>

namespace {
constexpr quint32 kNanosecondsPerSecond = 1'000'000'000;

timespec readClock(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now;
}
} // namespace

TimeUtils TimeUtils::mInstance;

TimeUtils::TimeUtils() : mStartTime(currentTime()) {}

timespec TimeUtils::currentTime()
{
    return readClock(CLOCK_REALTIME);
}

timespec TimeUtils::monotonicTime()
{
    return readClock(CLOCK_MONOTONIC);
}

timespec TimeUtils::startTime()
{
    return mInstance.mStartTime;
}

bool TimeUtils::nanoSleep(quint32 nanoseconds)
{
    timespec request{};
    request.tv_sec = static_cast<time_t>(nanoseconds / kNanosecondsPerSecond);
    request.tv_nsec = static_cast<long>(nanoseconds % kNanosecondsPerSecond);
    timespec remaining{};
    while (nanosleep(&request, &remaining) != 0) {
        if (errno != EINTR) {
            return false;
        }
        std::swap(request, remaining);
    }
    return true;
}

bool operator==(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::ostream& operator<<(std::ostream& out, const timespec& time)
{
    const std::string text =
        std::to_string(time.tv_sec) + "s, " + std::to_string(time.tv_nsec) + "ns";
    return out.write(text.data(), static_cast<std::streamsize>(text.size()));
}
