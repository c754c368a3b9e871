#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "DriverFiles.h"

namespace sandbox {

enum class FaultKind
{
    Error,  ///< the write fails with an errno
    Short,  ///< only the first bytes are taken
    Stall,  ///< the answer is delayed
    Vanish, ///< the write fails, and the file cannot be found meanwhile
};

/** A fault of a file of the driver: what fails, from when on, and for how many writes. */
struct Fault
{
    std::string mText; ///< as given
    DriverFile mFile = DriverFile::AdcIn;
    std::uint64_t mWrite = 0;  ///< from this write on, counted from 1; 0: from a time on
    std::int64_t mDelayNs = 0; ///< that time, after the first block
    FaultKind mKind = FaultKind::Error;
    std::string mWhat;         ///< the kind with its value, as given
    int mError = 0;            ///< of Error and Vanish: an errno value
    std::size_t mBytes = 0;    ///< of Short: max bytes that are taken
    std::int64_t mStallNs = 0; ///< of Stall
    std::uint64_t mLeft = 1;   ///< how many more writes it concerns
    bool mWasMet = false;
};

/** Counts the writes to each file and decides which of them meet a fault. */
class FaultPlan
{
public:
    explicit FaultPlan(std::vector<Fault> faults) : mFaults(std::move(faults)) {}

    bool isEmpty() const { return mFaults.empty(); }

    /**
     * Counts a write. Returns the fault that it meets, or null; of several, the one that was
     * given first. Valid until the next call.
     * @param elapsedNs since the first block; nothing when there was none yet
     */
    const Fault* countWrite(DriverFile file, std::optional<std::int64_t> elapsedNs);

    /** Whether the file has vanished just now. See countWrite() about elapsedNs. */
    bool isVanished(DriverFile file, std::optional<std::int64_t> elapsedNs) const;

    /** The faults that no write has met yet, as they were asked for. */
    std::vector<std::string> unmet() const;

private:
    bool isDue(const Fault& fault, std::optional<std::int64_t> elapsedNs) const;

    std::vector<Fault> mFaults;
    std::array<std::uint64_t, kDriverFileCount> mWrites{};
};

} // namespace sandbox
