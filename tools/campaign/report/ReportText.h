#pragma once

#include <QtGlobal>
#include <string>

#include "report/NightSummary.h"

namespace report {

/** A time in UTC to the nanosecond: "2026-11-25T22:00:01.000055555Z". */
std::string utcText(qint64 ns);

/** The same to the second, for a reader: "2026-11-25 22:00:01". */
std::string shortUtcText(qint64 ns);

/** A duration with two or three significant parts: "9 h 12 min", "3.21 s", "41.7 ms", "0 s". */
std::string durationText(qint64 ns);

/** Seconds with nine decimals. */
std::string secondsText(qint64 ns);

/** "1,234,567". */
std::string groupedText(quint64 number);

/** "1 play", "2 plays". */
std::string countText(quint64 count, const std::string& what);

/** Name of a play for the reader: "dip1 (4 of 10)", or "dip1" if it is played once. */
std::string playText(const NightSummary& night, const PlaySummary& play);

/**
 * The verdict of the night in one line: "Failed: 2 of 33 plays failed, 1 finding outside the
 * plays". Its first word is the verdict: Passed, Failed, Commanded (on a device), Cut off,
 * Interrupted, Gave up.
 */
std::string verdictText(const NightSummary& night);

} // namespace report
