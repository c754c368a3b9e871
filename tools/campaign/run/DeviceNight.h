#pragma once

#include "PlayRequest.h"
#include "run/ScheduledNight.h"

namespace run {

/** What a night on a device acts through. */
class Device
{
public:
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    /** Writes the line into the control FIFO. @return what is wrong; empty when it was written */
    virtual std::string send(const std::string& line) = 0;

    /** Why the program takes no commands: it has ended, as far as that can be seen; else empty. */
    virtual std::string problem() = 0;
};

/**
 * A night on a device, whose stream cannot be seen: each case is commanded, the log answers, and
 * the time of the case passes. So no play of it has passed: it was commanded and not observed, or
 * it has failed. Like Night, it has no clock and no file of its own.
 *
 * Borrows all that it is given.
 */
class DeviceNight : public ScheduledNight
{
public:
    /** @param steadyNs of the steady signal's file: a command is taken at its end */
    DeviceNight(const journal::NightBegin& night, qint64 steadyNs, const NightOptions& options,
                Device& device, journal::JournalSink& sink);

    /** The log has one more line. */
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
        Playing,   ///< it has
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
