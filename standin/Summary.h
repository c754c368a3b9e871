#pragma once

#include <cstdint>
#include <string>

class SimulatedDriver;
class StreamStatistics;

/**
 * One line on how the stream stands at `realtimeNs`: seconds since the first block (`elapsedNs`),
 * samples, their rate, and how far the last one is before or after the wall clock.
 */
std::string statusText(const StreamStatistics& statistics, std::int64_t elapsedNs,
                       std::int64_t realtimeNs);

/** What the sandbox prints at the end, several lines. */
std::string summaryText(const SimulatedDriver& driver, bool withPmeDevice);
