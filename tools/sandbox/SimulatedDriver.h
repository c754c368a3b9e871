#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Clocks.h"
#include "DriverFiles.h"
#include "EventLog.h"
#include "Faults.h"
#include "OutputFile.h"
#include "RateLimit.h"
#include "StreamStatistics.h"

namespace sandbox {

class Console;

/** The output files of the driver; an empty path means none. */
struct DriverOutputs
{
    std::string mRecordPath;
    std::string mEventsPath;
    std::string mPmePath;
};

/** The answer to a write: an errno value, or, when that is 0, how many bytes were taken. */
struct WriteAnswer
{
    int mError;
    std::size_t mBytes;
    std::int64_t mDelayNs = 0; ///< how long the answer is to be held back
};

/**
 * The simulated driver behind its files: accepts what its rules allow, refuses the rest with
 * EINVAL, triggers planned faults, and records, counts and measures everything. Independent of how
 * the files are made.
 */
class SimulatedDriver
{
public:
    /**
     * Opens the output files; throws a std::system_error when one cannot be. `console` takes the
     * reports and is borrowed for the object's life.
     */
    SimulatedDriver(const DriverOutputs& outputs, std::vector<Fault> faults, Console& console);

    /** Handles a write to a file of the driver. `data` has `size` bytes. */
    WriteAnswer write(DriverFile file, off_t offset, const char* data, std::size_t size);

    /** Whether a fault hides the file now. */
    bool isVanished(DriverFile file) const;

    /** The content of h2p, the only file that can be read. */
    static const char* h2pText() { return "0\n"; }

    /** Writes buffered output to the files, and reports how many messages were held back. */
    void flush();

    /** As flush(), and closes the output files except for the events. */
    void closeOutputs();

    bool hasFailedOutput() const;

    EventLog& events() { return mEvents; }
    const StreamStatistics& statistics() const { return mStatistics; }
    std::uint64_t acceptedWrites(DriverFile file) const;
    std::uint64_t refusedWrites() const { return mRefusedWrites; }

    /** Writes that triggered a planned fault, whether they were accepted or not. */
    std::uint64_t faultedWrites() const { return mFaultedWrites; }
    const FaultPlan& faults() const { return mFaults; }

private:
    std::optional<std::int64_t> sinceFirstBlock(const Arrival& now) const;
    void accept(DriverFile file, const char* data, std::size_t size, const Arrival& arrival,
                const std::string& fault);
    void acceptBlock(const char* data, std::size_t size, const Arrival& arrival);
    void refuse(DriverFile file, off_t offset, std::size_t size, const char* expected,
                const Arrival& arrival);

    Console& mConsole;
    OutputFile mRecord;
    EventLog mEvents;
    OutputFile mPme;
    FaultPlan mFaults;
    StreamStatistics mStatistics;
    std::array<std::uint64_t, kDriverFileCount> mAcceptedWrites{};
    std::uint64_t mRefusedWrites = 0;
    std::uint64_t mFaultedWrites = 0;
    RateLimit mRefusalReports;
};

} // namespace sandbox
