#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "SampleRecord.h"

namespace run {

/** One instant on two clocks, in ns. */
struct Moment
{
    qint64 mWallNs = 0;   ///< since the epoch, UTC; this clock may be set during the night
    qint64 mSteadyNs = 0; ///< of a clock that cannot be set
};

/**
 * The interface through which a night acts. No function waits or throws. Results come back to the
 * night as an event, a record or the end of the program.
 */
class Desk
{
public:
    Desk() = default;
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;
    virtual ~Desk() = default;

    /** Starts the program. Its end is always reported, even if it cannot be started. */
    virtual void start(int run) = 0;

    /** Writes a command, without a line end, into the control FIFO. */
    virtual void send(const std::string& command) = 0;

    /** Asks the program to end. */
    virtual void stop() = 0;

    /** Ends a program that does not react to stop(). */
    virtual void kill() = 0;

    /**
     * Keeps samples in a file of that name.
     * @return its path relative to the folder of the night; empty if it was not kept
     */
    virtual std::string keep(const std::string& name, const std::vector<SampleRecord>& records) = 0;

    /**
     * Adds records to the recording of a play; the first call starts it.
     * @param name relative to the folder of the night, without a suffix
     */
    virtual void record(const std::string& name, const SampleRecord* records, size_t count) = 0;

    /** Ends the recording. @param isWanted whether to keep it; otherwise it is removed */
    virtual void endRecording(const std::string& name, bool isWanted) = 0;
};

} // namespace run
