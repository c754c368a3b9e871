#include "VirtualSystem.h"

#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {
constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
constexpr qint64 kMicrosecondsPerSecond = 1'000'000;
constexpr qint64 kNanosecondsPerMicrosecond = 1000;

/** The kernel's call for our timespec, whose seconds have 64 bits. */
#ifdef SYS_clock_gettime64
constexpr long kClockCall = SYS_clock_gettime64;
#else
constexpr long kClockCall = SYS_clock_gettime;
#endif

/** Constant-initialised: static constructors read the clock before any object can live. */
VirtualSystem* gSystem = nullptr;

int fail(int error)
{
    errno = error;
    return -1;
}

/** True if none is left; otherwise counts down. */
bool isDue(int* left)
{
    if (*left == 0) {
        return true;
    }
    --*left;
    return false;
}

int pollNow(int count, fd_set* readSet, const fd_set& wanted)
{
    *readSet = wanted;
    const timespec atOnce{};
    return pselect(count, readSet, nullptr, nullptr, &atOnce, nullptr);
}

bool isFile(int descriptor, const std::string& path)
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error) ==
           path;
}
} // namespace

qint64 toNanoseconds(const timespec& time)
{
    return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

timespec fromNanoseconds(qint64 nanoseconds)
{
    return {static_cast<time_t>(nanoseconds / kNanosecondsPerSecond),
            static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
}

VirtualSystem::VirtualSystem()
{
    gSystem = this;
}

VirtualSystem::~VirtualSystem()
{
    gSystem = nullptr;
}

void VirtualSystem::advance(qint64 nanoseconds)
{
    mRealtime = fromNanoseconds(toNanoseconds(mRealtime) + nanoseconds);
    mMonotonic = fromNanoseconds(toNanoseconds(mMonotonic) + nanoseconds);
}

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept
{
    if (gSystem == nullptr || (clock != CLOCK_REALTIME && clock != CLOCK_MONOTONIC)) {
        return static_cast<int>(syscall(kClockCall, clock, now));
    }
    if (clock == CLOCK_REALTIME && gSystem->mClockError != 0) {
        return fail(gSystem->mClockError);
    }
    *now = clock == CLOCK_REALTIME ? gSystem->mRealtime : gSystem->mMonotonic;
    if (clock == CLOCK_REALTIME) {
        gSystem->advance(gSystem->mTickPerReading);
    }
    return 0;
}

extern "C" int nanosleep(const timespec* request, timespec* remaining)
{
    if (gSystem == nullptr) {
        const int error = clock_nanosleep(CLOCK_REALTIME, 0, request, remaining);
        return error == 0 ? 0 : fail(error);
    }
    const qint64 wanted = toNanoseconds(*request);
    gSystem->mSleeps.push_back(wanted);
    if (gSystem->mSleepError != 0) {
        return fail(gSystem->mSleepError);
    }
    if (!gSystem->mInterruptSleep.empty()) {
        const qint64 slept = gSystem->mInterruptSleep.front();
        gSystem->mInterruptSleep.pop_front();
        gSystem->advance(slept);
        *remaining = fromNanoseconds(wanted - slept);
        return fail(EINTR);
    }
    gSystem->advance(wanted + gSystem->mOversleep);
    return 0;
}

#ifdef __USE_TIME_BITS64
namespace {
/** The structure of a library that was built with 32-bit time. */
struct ShortTimespec
{
    qint32 mSeconds;
    qint32 mNanoseconds;
};

ShortTimespec shortened(const timespec& time)
{
    return {static_cast<qint32>(time.tv_sec), static_cast<qint32>(time.tv_nsec)};
}
} // namespace

extern "C" int shortClockGettime(clockid_t clock, ShortTimespec* now) noexcept
    __asm__("clock_gettime");
extern "C" int shortNanosleep(const ShortTimespec* request,
                              ShortTimespec* remaining) __asm__("nanosleep");

extern "C" int shortClockGettime(clockid_t clock, ShortTimespec* now) noexcept
{
    timespec time{};
    const int result = clock_gettime(clock, &time);
    *now = shortened(time);
    const bool fits = now->mSeconds == time.tv_sec;
    return result == 0 && !fits ? fail(EOVERFLOW) : result;
}

extern "C" int shortNanosleep(const ShortTimespec* request, ShortTimespec* remaining)
{
    const timespec wanted{request->mSeconds, request->mNanoseconds};
    timespec left{};
    const int result = nanosleep(&wanted, &left);
    if (result != 0 && remaining != nullptr) {
        *remaining = shortened(left);
    }
    return result;
}
#endif

/** The program uses the read set only. */
extern "C" int select(int count, fd_set* readSet, fd_set*, fd_set*, timeval* timeout)
{
    const qint64 limit = // µs
        timeout == nullptr ? -1 : timeout->tv_sec * kMicrosecondsPerSecond + timeout->tv_usec;
    if (gSystem == nullptr) {
        const timespec time = fromNanoseconds(limit * kNanosecondsPerMicrosecond);
        return pselect(count, readSet, nullptr, nullptr, timeout == nullptr ? nullptr : &time,
                       nullptr);
    }
    if (gSystem->mNextSelectError != 0) {
        return fail(std::exchange(gSystem->mNextSelectError, 0));
    }
    const fd_set wanted = *readSet;
    if (limit == 0) {
        ++gSystem->mPolls;
        if (gSystem->mOnPoll) {
            gSystem->mOnPoll();
        }
        return pollNow(count, readSet, wanted);
    }
    gSystem->mWaits.push_back(limit);
    int ready = pollNow(count, readSet, wanted);
    if (ready == 0 && gSystem->mOnWait) {
        gSystem->mOnWait();
        ready = pollNow(count, readSet, wanted);
    }
    if (ready == 0 && limit < 0) {
        throw std::logic_error("a wait without limit that nothing will end");
    }
    if (ready == 0) {
        gSystem->advance(limit * kNanosecondsPerMicrosecond);
    }
    return ready;
}

extern "C" ssize_t read(int descriptor, void* buffer, size_t size)
{
    if (gSystem != nullptr) {
        ++gSystem->mReads;
        if (const auto onRead = std::exchange(gSystem->mOnRead, nullptr)) {
            onRead();
        }
        if (gSystem->mReadFault != 0 && isDue(&gSystem->mReadsUntilFault)) {
            const int fault = std::exchange(gSystem->mReadFault, 0);
            return fault == VirtualSystem::kNothing ? 0 : fail(fault);
        }
    }
    return syscall(SYS_read, descriptor, buffer, size);
}

/** What read() becomes where buffers are checked, as the hardened presets ask for. */
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t /*bufferSize*/)
{
    return read(descriptor, buffer, size);
}

extern "C" ssize_t write(int descriptor, const void* buffer, size_t size)
{
    if (gSystem != nullptr && gSystem->mWriteFault != 0 &&
        isFile(descriptor, gSystem->mFaultyFile) && isDue(&gSystem->mWritesUntilFault)) {
        const int fault = std::exchange(gSystem->mWriteFault, 0);
        if (fault == VirtualSystem::kThrow) {
            throw std::runtime_error("out of a write");
        }
        return fail(fault);
    }
    return syscall(SYS_write, descriptor, buffer, size);
}
