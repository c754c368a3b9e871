#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Clocks.h"
#include "DriverFiles.h"
#include "EventLog.h"
#include "OutputFile.h"
#include "RateLimit.h"
#include "StreamStatistics.h"

class Console;

/** Where the driver writes what it gets; an empty path means not at all. */
struct DriverOutputs
{
    std::string mRecordPath;
    std::string mEventsPath;
    std::string mPmePath;
};

/** What the writer is told: an errno value, or, when that is 0, how many bytes were taken. */
struct WriteAnswer
{
    int mError;
    std::size_t mBytes;
};

/**
 * The driver's behaviour behind its files: takes what its rules allow, refuses the rest with
 * EINVAL, and records, counts and measures both. Knows nothing of how the files come about.
 */
class SimulatedDriver
{
public:
    /**
     * Opens the output files; throws a std::system_error when one cannot be. `console` takes the
     * reports and is borrowed for the object's life.
     */
    SimulatedDriver(const DriverOutputs& outputs, Console& console);

    /** Every write to a file of the driver goes through here. `data` has `size` bytes. */
    WriteAnswer write(DriverFile file, off_t offset, const char* data, std::size_t size);

    /** What the readable file holds. */
    static const char* h2pText() { return "0\n"; }

    /** Hands what is buffered to the output files, and tells of reports that were held back. */
    void flush();

    bool hasFailedOutput() const;

    EventLog& events() { return mEvents; }
    const StreamStatistics& statistics() const { return mStatistics; }
    std::uint64_t acceptedWrites(DriverFile file) const;
    std::uint64_t refusedWrites() const { return mRefusedWrites; }

private:
    void accept(DriverFile file, const char* data, std::size_t size, const Arrival& arrival);
    void acceptBlock(const char* data, std::size_t size, const Arrival& arrival);
    void refuse(DriverFile file, off_t offset, std::size_t size, const char* objection,
                const Arrival& arrival);

    Console& mConsole;
    OutputFile mRecord;
    EventLog mEvents;
    OutputFile mPme;
    StreamStatistics mStatistics;
    std::array<std::uint64_t, kDriverFileCount> mAcceptedWrites{};
    std::uint64_t mRefusedWrites = 0;
    RateLimit mRefusalReports;
};
