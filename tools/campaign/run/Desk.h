#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "SampleRecord.h"

namespace run {

/** One instant on two clocks, in ns. */
struct Moment
{
    qint64 mWallNs = 0;   ///< since the epoch, UTC; may be set while the night goes on
    qint64 mSteadyNs = 0; ///< of a clock that nobody sets
};

/**
 * What a night acts through. Nothing here waits or throws: what becomes of it comes back to the
 * night as an event, a record or the end of the program.
 */
class Desk
{
public:
    Desk() = default;
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;
    virtual ~Desk() = default;

    /** Starts the program; its end is reported in any case, also when it cannot be started. */
    virtual void start(int run) = 0;

    /** Writes a command, without a line end, into the control FIFO. */
    virtual void send(const std::string& command) = 0;

    /** Asks the program to end. */
    virtual void stop() = 0;

    /** Ends it for good, when it does not do what it is asked for. */
    virtual void kill() = 0;

    /**
     * Keeps samples in a file of that name.
     * @return its path relative to the folder of the night; empty when it was not kept
     */
    virtual std::string keep(const std::string& name, const std::vector<SampleRecord>& records) = 0;

    /**
     * Adds records to a recording of a play, which begins with the first of them.
     * @param name relative to the folder of the night, without a suffix
     */
    virtual void record(const std::string& name, const SampleRecord* records, size_t count) = 0;

    /** No more of it comes. @param isWanted else it is thrown away */
    virtual void endRecording(const std::string& name, bool isWanted) = 0;
};

} // namespace run
