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
    Stall,  ///< the answer is held back
    Vanish, ///< the write fails, and the file cannot be found meanwhile
};

/** What is to go wrong with a file of the driver, from when on and for how long. */
struct Fault
{
    std::string mText; ///< as it was asked for
    DriverFile mFile = DriverFile::AdcIn;
    std::uint64_t mWrite = 0;  ///< the first write that meets it, counted from 1; or 0 and ...
    std::int64_t mDelayNs = 0; ///< ... the time after the first block from which on they do
    FaultKind mKind = FaultKind::Error;
    std::string mWhat;         ///< the kind with its value, as it was asked for
    int mError = 0;            ///< of Error and Vanish: an errno value
    std::size_t mBytes = 0;    ///< of Short: what is taken at most
    std::int64_t mStallNs = 0; ///< of Stall
    std::uint64_t mLeft = 1;   ///< the writes that are still to meet it
    bool mWasMet = false;
};

/** Decides which writes meet a fault. */
class FaultPlan
{
public:
    explicit FaultPlan(std::vector<Fault> faults) : mFaults(std::move(faults)) {}

    /** Whether there is anything to go wrong. */
    bool isEmpty() const { return mFaults.empty(); }

    /**
     * Counts a write. Returns the fault that it meets, the one first asked for if there are
     * several, or null; valid until the next call.
     * @param elapsedNs since the first block; nothing when there was none
     */
    const Fault* meet(DriverFile file, std::optional<std::int64_t> elapsedNs);

    /** Whether the file has vanished just now. See meet() about elapsedNs. */
    bool isVanished(DriverFile file, std::optional<std::int64_t> elapsedNs) const;

    /** The faults that no write has met yet, as they were asked for. */
    std::vector<std::string> unmet() const;

private:
    bool isDue(const Fault& fault, std::optional<std::int64_t> elapsedNs) const;

    std::vector<Fault> mFaults;
    std::array<std::uint64_t, kDriverFileCount> mWrites{};
};

} // namespace sandbox
