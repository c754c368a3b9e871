#pragma once

#include <time.h>

#include <QtGlobal>
#include <ostream>

/**
 * The program's access to the system clocks and to sleeping, in POSIX timespec (seconds and
 * nanoseconds). All operations may be called from any thread.
 */
class TimeUtils
{
public:
    virtual ~TimeUtils() = default;

    /** CLOCK_REALTIME, the wall clock. */
    static timespec currentTime();

    /** CLOCK_MONOTONIC. */
    static timespec monotonicTime();

    /** The wall clock when the program started (before main). */
    static timespec startTime();

    /**
     * Sleeps for the given time; a signal does not shorten the sleep.
     *
     * @param nanoseconds up to 4.294967295 s
     * @return true if it slept for the whole time
     */
    static bool nanoSleep(quint32 nanoseconds);

private:
    TimeUtils();

    static TimeUtils mInstance;

    timespec mStartTime;
};

/** True when seconds and nanoseconds are equal. */
bool operator==(const timespec& a, const timespec& b);

/**
 * Writes for example "12s, 500ns", without a line end. Ignores and keeps the stream's base, width
 * and other settings.
 */
std::ostream& operator<<(std::ostream& out, const timespec& time);
