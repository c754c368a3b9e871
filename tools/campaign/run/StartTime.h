#pragma once

#include <QtGlobal>
#include <string>

namespace run {

/** Why this start time is invalid; empty if it is valid. */
std::string startTimeProblem(const std::string& text);

/**
 * The start time in ns since the epoch. "HH:MM" is the next such time of the local clock,
 * "YYYY-MM-DDTHH:MM" exactly that local time.
 * Requires: startTimeProblem() is empty.
 */
qint64 startTimeNs(const std::string& text, qint64 nowNs);

/** "2026-11-25 22:30:00", local time. */
std::string startTimeText(qint64 ns);

} // namespace run
