#pragma once

#include "PlayRequest.h"
#include "run/ScheduledNight.h"

namespace run {

/** The interface through which a night on a device acts. */
class Device
{
public:
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    /** Writes the line into the control FIFO. @return the error; empty if it was written */
    virtual std::string send(const std::string& line) = 0;

    /** Why the program takes no commands, such as its end; empty if it does. */
    virtual std::string problem() = 0;
};

/**
 * A night on a device, whose stream cannot be observed. It sends the command of each case, waits
 * for the answer in the log, and then for the duration of the case. So a play is either not
 * observed or failed, never passed. Like Night, it has no clock or file.
 *
 * Borrows all its arguments.
 */
class DeviceNight : public ScheduledNight
{
public:
    /** @param steadyNs duration of the steady signal's file; a command is taken at its end */
    DeviceNight(const journal::NightBegin& night, qint64 steadyNs, const NightOptions& options,
                Device& device, journal::JournalSink& sink);

    /** Takes the next line of the log. */
    void addLogLine(const std::string& line, const Moment& now);

    void interrupt(const Moment& now) override;
    void tick(const Moment& now) override;
    bool isOver() const override { return mState == State::Over; }

private:
    enum class State
    {
        Waiting,   ///< for the time to start
        Gap,       ///< before the command of a play
        Commanded, ///< the log has not answered yet
        Playing,   ///< the log has answered
        Over,
    };

    void nextPlay();
    void sendCommand();
    void watchPlay();
    void fail(const std::string& kind, const std::string& text);
    void endPlay();
    void enter(State state);
    void finish(journal::NightEnd::Reason reason);
    qint64 inStateNs() const { return schedule().now().mSteadyNs - mSinceNs; }

    Device& mDevice;
    qint64 mSteadyFileNs;
    qint64 mLongestCaseNs = 0;
    State mState = State::Waiting;
    qint64 mSinceNs = 0; ///< on the steady clock
    control::PlayRequest mRequest;
};

} // namespace run
