#include "Summary.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "Clocks.h"
#include "SimulatedDriver.h"

namespace {

constexpr double kNanosecondsPerMillisecond = 1e6;

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...)
{
    va_list arguments;
    va_start(arguments, pattern);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::vector<char> text(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), pattern, again);
    va_end(again);
    return text.data();
}

std::string row(const char* name, const std::string& value)
{
    return format("  %-19s%s\n", name, value.c_str());
}

double inSeconds(std::int64_t nanoseconds)
{
    return static_cast<double>(nanoseconds) / static_cast<double>(kNanosecondsPerSecond);
}

/** All digits: a time stamp does not fit into a double. */
std::string stamp(std::int64_t nanoseconds)
{
    return format("%lld.%09lld", static_cast<long long>(nanoseconds / kNanosecondsPerSecond),
                  static_cast<long long>(nanoseconds % kNanosecondsPerSecond));
}

std::string stepRows(const StreamStatistics& statistics)
{
    if (statistics.samples() < 2) {
        return row("step", "- (needs two samples)");
    }
    return row("smallest step",
               format("%lld ns", static_cast<long long>(statistics.smallestStepNs()))) +
           row("largest step",
               format("%lld ns", static_cast<long long>(statistics.largestStepNs())));
}

std::string rateRows(const StreamStatistics& statistics)
{
    if (statistics.stepRate() == 0) {
        return row("rate of the steps", "- (needs time stamps that go forward)");
    }
    const std::string steps =
        row("rate of the steps", format("%.3f samples/s", statistics.stepRate()));
    if (statistics.signalSpeed() == 0) {
        return steps + row("rate on arrival", "- (needs two blocks)");
    }
    return steps + row("rate on arrival",
                       format("%.3f samples/s, %+.4f %% off the steps", statistics.arrivalRate(),
                              (statistics.signalSpeed() - 1) * 100));
}

std::string distanceRow(const char* name, const Histogram& histogram)
{
    const auto milliseconds = [](std::uint64_t nanoseconds) {
        return static_cast<double>(nanoseconds) / kNanosecondsPerMillisecond;
    };
    return row(
        name, format("%10.3f %10.3f %10.3f %10.3f ms", milliseconds(histogram.percentile(50)),
                     milliseconds(histogram.percentile(95)), milliseconds(histogram.percentile(99)),
                     milliseconds(histogram.largest())));
}

std::string distanceRows(const StreamStatistics& statistics)
{
    return row("of all blocks",
               format("%10s %10s %10s %10s", "50 % up to", "95 % up to", "99 % up to", "largest")) +
           distanceRow("lead on arrival", statistics.leadNs()) +
           distanceRow("lag on arrival", statistics.lagNs());
}

std::string streamRows(const StreamStatistics& statistics)
{
    if (statistics.blocks() == 0) {
        return "";
    }
    return row("signal", format("%.3f s", inSeconds(statistics.signalNs()))) +
           row("first time stamp", stamp(statistics.firstStampNs())) +
           row("last time stamp", stamp(statistics.lastStampNs())) + stepRows(statistics) +
           rateRows(statistics) + distanceRows(statistics);
}

std::string count(std::uint64_t value)
{
    return std::to_string(value);
}

} // namespace

std::string statusText(const StreamStatistics& statistics, const Arrival& now)
{
    if (statistics.blocks() == 0) {
        return "waiting for the first block";
    }
    const std::int64_t elapsedNs = now.mMonotonicNs - statistics.firstArrival().mMonotonicNs;
    const double leadMs = static_cast<double>(statistics.lastStampNs() - now.mRealtimeNs) /
                          kNanosecondsPerMillisecond;
    return format("%.0f s  %llu samples  %.1f samples/s  %s %.1f ms", inSeconds(elapsedNs),
                  static_cast<unsigned long long>(statistics.samples()), statistics.arrivalRate(),
                  leadMs < 0 ? "lag" : "lead", std::abs(leadMs));
}

std::string summaryText(const SimulatedDriver& driver, bool withPmeDevice)
{
    const StreamStatistics& statistics = driver.statistics();
    std::string text = "What arrived at the driver:\n";
    text += row("blocks", count(statistics.blocks()));
    text += row("samples", count(statistics.samples()));
    text += streamRows(statistics);
    text += row("f2h writes", count(driver.acceptedWrites(DriverFile::F2h)));
    text += row("r2h writes", count(driver.acceptedWrites(DriverFile::R2h)));
    if (withPmeDevice) {
        text += row("PME frames", count(driver.acceptedWrites(DriverFile::PmeSim)));
    }
    text += row("refused writes", count(driver.refusedWrites()));
    if (!driver.faults().isEmpty()) {
        text += row("faulted writes", count(driver.faultedWrites()));
    }
    return text;
}
