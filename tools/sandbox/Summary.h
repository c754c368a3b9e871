#pragma once

#include <string>

namespace sandbox {

class SimulatedDriver;
struct Arrival;
class StreamStatistics;

/**
 * The status line: seconds since the first block, samples, their rate, and how far the last one
 * leads or lags the wall clock.
 */
std::string statusText(const StreamStatistics& statistics, const Arrival& now);

/** What the sandbox prints at the end, several lines. */
std::string summaryText(const SimulatedDriver& driver, bool withPmeDevice);

} // namespace sandbox
