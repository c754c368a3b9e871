#pragma once

#include <time.h>

#include <QtGlobal>
#include <deque>
#include <functional>
#include <string>
#include <vector>

qint64 toNanoseconds(const timespec& time);
timespec fromNanoseconds(qint64 nanoseconds);

/**
 * The system calls that tell time, wait, read and write, as a test wants them. The test program
 * defines clock_gettime, nanosleep, select, read and write itself; while a VirtualSystem
 * lives, they do what its members say, and otherwise they go to the kernel unchanged. On a 32-bit
 * target they stand for the functions with a time of 64 bits, which our code calls, and for those
 * with a time of 32 bits, which Qt calls.
 *
 * Virtual time passes only in advance(), in sleeps and in waits. The functions may throw in order
 * to leave an endless loop. At most one object at a time; all calls from one thread.
 */
class VirtualSystem
{
public:
    VirtualSystem();
    VirtualSystem(const VirtualSystem&) = delete;
    VirtualSystem& operator=(const VirtualSystem&) = delete;
    ~VirtualSystem();

    /** Lets both clocks pass by that many ns. */
    void advance(qint64 nanoseconds);

    timespec mRealtime{1'700'000'005, 0};
    timespec mMonotonic{5000, 0};
    qint64 mTickPerReading = 0; ///< ns that pass after each reading of the wall clock
    int mClockError = 0;        ///< the errno that every reading of the wall clock fails with

    std::vector<qint64> mSleeps;        ///< ns that each nanosleep() asked for
    std::deque<qint64> mInterruptSleep; ///< the next sleeps end with EINTR after so many ns
    int mSleepError = 0;                ///< the errno that every sleep fails with
    qint64 mOversleep = 0;              ///< ns that a whole sleep takes longer

    std::vector<qint64> mWaits;    ///< µs of each select() with a time-out, -1 without limit
    int mPolls = 0;                ///< calls of select() with a time-out of 0
    int mNextSelectError = 0;      ///< the errno that the next select() fails with
    std::function<void()> mOnPoll; ///< before each poll
    std::function<void()> mOnWait; ///< in each wait that finds nothing ready; then looks again

    static constexpr int kNothing = -1; ///< a fault: the read delivers nothing

    int mReads = 0;           ///< calls of read()
    int mReadsUntilFault = 0; ///< reads that still work before mReadFault
    int mReadFault = 0;       ///< the errno that one read fails with, or kNothing

    std::function<void()> mOnRead; ///< before the next read

    static constexpr int kThrow = -2; ///< a fault: the write throws

    std::string mFaultyFile;   ///< the file in which a write fails ...
    int mWritesUntilFault = 0; ///< ... after so many that work ...
    int mWriteFault = 0;       ///< ... with this errno, or kThrow, once
};
