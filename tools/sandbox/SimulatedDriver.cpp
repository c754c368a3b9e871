#include "SimulatedDriver.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "Console.h"
#include "SampleRecord.h"

namespace sandbox {

SimulatedDriver::SimulatedDriver(const DriverOutputs& outputs, std::vector<Fault> faults,
                                 Console& console)
    : mConsole(console),
      mRecord(outputs.mRecordPath, console),
      mEvents(outputs.mEventsPath, console),
      mPme(outputs.mPmePath, console),
      mFaults(std::move(faults))
{
}

WriteAnswer SimulatedDriver::write(DriverFile file, off_t offset, const char* data,
                                   std::size_t size)
{
    const Arrival arrival = Arrival::now();
    const Fault* const fault = mFaults.countWrite(file, sinceFirstBlock(arrival));
    static const Fault sNone{};
    const Fault& effect = fault != nullptr ? *fault : sNone;
    mFaultedWrites += fault != nullptr ? 1 : 0;
    if (effect.mError != 0) {
        mEvents.addWrite(arrival.mRealtimeNs, driverFileName(file), size, false, effect.mWhat);
        return {effect.mError, 0};
    }
    if (const char* expected = expectedWrite(file, offset, size)) {
        refuse(file, offset, size, expected, arrival);
        return {EINVAL, 0};
    }
    const std::size_t taken =
        effect.mKind == FaultKind::Short ? std::min(size, effect.mBytes) : size;
    accept(file, data, taken, arrival, effect.mWhat);
    return {0, taken, effect.mStallNs};
}

bool SimulatedDriver::isVanished(DriverFile file) const
{
    return !mFaults.isEmpty() && mFaults.isVanished(file, sinceFirstBlock(Arrival::now()));
}

std::optional<std::int64_t> SimulatedDriver::sinceFirstBlock(const Arrival& now) const
{
    if (mStatistics.blocks() == 0) {
        return std::nullopt;
    }
    return now.mMonotonicNs - mStatistics.firstArrival().mMonotonicNs;
}

void SimulatedDriver::accept(DriverFile file, const char* data, std::size_t size,
                             const Arrival& arrival, const std::string& fault)
{
    ++mAcceptedWrites[static_cast<std::size_t>(file)];
    if (file == DriverFile::F2h || file == DriverFile::R2h) {
        mEvents.addWords(arrival.mRealtimeNs, driverFileName(file), data, size, fault);
        return;
    }
    mEvents.addWrite(arrival.mRealtimeNs, driverFileName(file), size, true, fault);
    if (file == DriverFile::AdcIn && size > 0) {
        acceptBlock(data, size, arrival);
    } else if (file == DriverFile::PmeSim) {
        mPme.write(data, size);
    }
}

void SimulatedDriver::acceptBlock(const char* data, std::size_t size, const Arrival& arrival)
{
    mRecord.write(data, size);
    std::array<SampleRecord, kSamplesPerPeriod> records{};
    std::memcpy(records.data(), data, size);
    mStatistics.addBlock(records.data(), size / sizeof(SampleRecord), arrival);
}

void SimulatedDriver::refuse(DriverFile file, off_t offset, std::size_t size, const char* expected,
                             const Arrival& arrival)
{
    ++mRefusedWrites;
    mEvents.addWrite(arrival.mRealtimeNs, driverFileName(file), size, false, "");
    if (mRefusalReports.allows(arrival.mMonotonicNs)) {
        mConsole.message(fmt::format("refused a write of {} bytes at offset {}: {} takes {}", size,
                                     offset, driverFileTraits(file).mPath, expected));
    }
}

void SimulatedDriver::flush()
{
    mRecord.flush();
    mPme.flush();
    if (const std::uint64_t suppressed = mRefusalReports.takeSuppressed()) {
        mConsole.message(fmt::format("refused {} more writes, not shown one by one", suppressed));
    }
}

void SimulatedDriver::closeOutputs()
{
    flush();
    mRecord.close();
    mPme.close();
}

bool SimulatedDriver::hasFailedOutput() const
{
    return mRecord.hasFailed() || mEvents.hasFailed() || mPme.hasFailed();
}

std::uint64_t SimulatedDriver::acceptedWrites(DriverFile file) const
{
    return mAcceptedWrites[static_cast<std::size_t>(file)];
}

} // namespace sandbox
