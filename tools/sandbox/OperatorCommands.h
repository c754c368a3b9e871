#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Options.h"

namespace sandbox {

class Console;
class EventLog;

/**
 * Stands in for the operator: writes commands into the control FIFO when they are due. Never waits
 * for a reader; a command that nobody reads is reported and dropped.
 */
class OperatorCommands
{
public:
    /** `commands` are sorted by time; the others are borrowed for the object's life. */
    OperatorCommands(std::vector<TimedCommand> commands, EventLog& events, Console& console);

    /** Sends all commands that are due `elapsedNs` after the first block. */
    void sendDue(std::int64_t elapsedNs);

    /** Sends a further command at once. */
    void send(const std::string& text);

    /** When the next one is due, in nanoseconds after the first block; nothing if none is left. */
    std::optional<std::int64_t> nextDueNs() const;

    /** Number of commands that are not due yet. */
    std::size_t remaining() const { return mCommands.size() - mNext; }

    /** Records in the events that the remaining ones were not sent. */
    void recordUnsent() const;

private:
    std::vector<TimedCommand> mCommands;
    EventLog& mEvents;
    Console& mConsole;
    std::size_t mNext = 0;
};

} // namespace sandbox
