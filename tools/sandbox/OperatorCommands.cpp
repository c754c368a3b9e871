#include "OperatorCommands.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "Clocks.h"
#include "Console.h"
#include "EventLog.h"
#include "FileDescriptor.h"
#include "FixedPaths.h"

namespace sandbox {

namespace {

constexpr char kEventName[] = "simulator_control";

/** Writes the line in one call. Returns the error, or an empty text. */
std::string writeToFifo(const std::string& line)
{
    const files::FileDescriptor fifo(open(kControlFifoPath, O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!fifo.isOpen()) {
        return errno == ENXIO ? "nobody reads it" : std::strerror(errno);
    }
    const ssize_t written = write(fifo.get(), line.data(), line.size());
    if (written < 0) {
        return errno == EAGAIN ? "it is full" : std::strerror(errno);
    }
    return static_cast<std::size_t>(written) == line.size() ? "" : "it took only part of the line";
}

} // namespace

OperatorCommands::OperatorCommands(std::vector<TimedCommand> commands, EventLog& events,
                                   Console& console)
    : mCommands(std::move(commands)), mEvents(events), mConsole(console)
{
}

void OperatorCommands::sendDue(std::int64_t elapsedNs)
{
    while (remaining() > 0 && mCommands[mNext].mDelayNs <= elapsedNs) {
        send(mCommands[mNext].mText);
        ++mNext;
    }
}

void OperatorCommands::recordUnsent() const
{
    for (std::size_t index = mNext; index < mCommands.size(); ++index) {
        mEvents.addCommand(realtimeNs(), kEventName, mCommands[index].mText,
                           "the run ended before");
    }
}

std::optional<std::int64_t> OperatorCommands::nextDueNs() const
{
    if (remaining() == 0) {
        return std::nullopt;
    }
    return mCommands[mNext].mDelayNs;
}

void OperatorCommands::send(const std::string& text)
{
    const std::int64_t sentNs = realtimeNs();
    const std::string problem = writeToFifo(text + "\n");
    mEvents.addCommand(sentNs, kEventName, text, problem);
    if (!problem.empty()) {
        mConsole.message(
            fmt::format("cannot send \"{}\" to {}: {}", text, kControlFifoPath, problem));
    }
}

} // namespace sandbox
