#pragma once

#include <string>

namespace sandbox {

class SimulatedDriver;
struct Arrival;
class StreamStatistics;

/**
 * One line on how the stream stands now: seconds since the first block, samples, their rate, and
 * how far the last one is before (+) or after (-) the wall clock.
 */
std::string statusText(const StreamStatistics& statistics, const Arrival& now);

/** What the sandbox prints at the end, several lines. */
std::string summaryText(const SimulatedDriver& driver, bool withPmeDevice);

} // namespace sandbox
