#pragma once

#include <QtGlobal>
#include <string>

namespace run {

/** Why this is no time to start at; empty when it is one. */
std::string startTimeProblem(const std::string& text);

/**
 * When to start, in ns since the epoch: "HH:MM" is the next such time of the local clock,
 * "YYYY-MM-DDTHH:MM" that very one.
 * Requires: startTimeProblem() is empty.
 */
qint64 startTimeNs(const std::string& text, qint64 nowNs);

/** "2026-11-25 22:30:00", local time. */
std::string startTimeText(qint64 ns);

} // namespace run
