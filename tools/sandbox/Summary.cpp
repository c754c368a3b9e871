#include "Summary.h"

#include <fmt/format.h>

#include <cmath>

#include "Clocks.h"
#include "SimulatedDriver.h"

namespace sandbox {

namespace {

constexpr double kNanosecondsPerMillisecond = 1e6;

template <typename Value>
std::string row(const char* name, const Value& value)
{
    return fmt::format("  {:<19}{}\n", name, value);
}

template <typename Integer>
double inMilliseconds(Integer nanoseconds)
{
    return static_cast<double>(nanoseconds) / kNanosecondsPerMillisecond;
}

/** With all digits: a double cannot hold a time stamp exactly. */
std::string stamp(std::int64_t nanoseconds)
{
    return fmt::format("{}.{:09}", nanoseconds / kNanosecondsPerSecond,
                       nanoseconds % kNanosecondsPerSecond);
}

std::string stepRows(const StreamStatistics& statistics)
{
    if (statistics.samples() < 2) {
        return row("step", "- (needs two samples)");
    }
    return row("smallest step", fmt::format("{} ns", statistics.minStepNs())) +
           row("largest step", fmt::format("{} ns", statistics.maxStepNs()));
}

std::string rateRows(const StreamStatistics& statistics)
{
    if (statistics.samplingRate() == 0) {
        return row("sampling rate", "- (needs increasing time stamps)");
    }
    const std::string sampling =
        row("sampling rate", fmt::format("{:.3f} samples/s", statistics.samplingRate()));
    if (statistics.playbackSpeed() == 0) {
        return sampling + row("arrival rate", "- (needs two blocks)");
    }
    return sampling +
           row("arrival rate",
               fmt::format("{:.3f} samples/s, {:+.4f} % off the sampling rate",
                           statistics.arrivalRate(), (statistics.playbackSpeed() - 1) * 100));
}

std::string percentileRow(const char* name, const Histogram& histogram)
{
    return row(name, fmt::format("{:10.3f} {:10.3f} {:10.3f} {:10.3f} ms",
                                 inMilliseconds(histogram.percentile(50)),
                                 inMilliseconds(histogram.percentile(95)),
                                 inMilliseconds(histogram.percentile(99)),
                                 inMilliseconds(histogram.max())));
}

std::string leadAndLagRows(const StreamStatistics& statistics)
{
    return row("per block",
               fmt::format("{:>10} {:>10} {:>10} {:>10}", "median", "95 %", "99 %", "max")) +
           percentileRow("lead on arrival", statistics.leadNs()) +
           percentileRow("lag on arrival", statistics.lagNs());
}

std::string streamRows(const StreamStatistics& statistics)
{
    if (statistics.blocks() == 0) {
        return "";
    }
    return row("signal", fmt::format("{:.3f} s", inSeconds(statistics.signalNs()))) +
           row("first time stamp", stamp(statistics.firstStampNs())) +
           row("last time stamp", stamp(statistics.lastStampNs())) + stepRows(statistics) +
           rateRows(statistics) + leadAndLagRows(statistics);
}

} // namespace

std::string statusText(const StreamStatistics& statistics, const Arrival& now)
{
    if (statistics.blocks() == 0) {
        return "waiting for the first block";
    }
    const std::int64_t elapsedNs = now.mMonotonicNs - statistics.firstArrival().mMonotonicNs;
    const double leadMs = inMilliseconds(statistics.lastStampNs() - now.mRealtimeNs);
    return fmt::format("{:.0f} s  {} samples  {:.1f} samples/s  {} {:.1f} ms", inSeconds(elapsedNs),
                       statistics.samples(), statistics.arrivalRate(), leadMs < 0 ? "lag" : "lead",
                       std::abs(leadMs));
}

std::string summaryText(const SimulatedDriver& driver, bool withPmeDevice)
{
    const StreamStatistics& statistics = driver.statistics();
    std::string text = "What arrived at the driver:\n";
    text += row("blocks", statistics.blocks());
    text += row("samples", statistics.samples());
    text += streamRows(statistics);
    text += row("f2h writes", driver.acceptedWrites(DriverFile::F2h));
    text += row("r2h writes", driver.acceptedWrites(DriverFile::R2h));
    if (withPmeDevice) {
        text += row("PME frames", driver.acceptedWrites(DriverFile::PmeSim));
    }
    text += row("refused writes", driver.refusedWrites());
    if (!driver.faults().isEmpty()) {
        text += row("faulted writes", driver.faultedWrites());
    }
    return text;
}

} // namespace sandbox
