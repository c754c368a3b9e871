#pragma once

#include "PlayRequest.h"
#include "run/Course.h"

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
};

/**
 * A night on a device, whose stream cannot be seen: each case is commanded, the log answers, and
 * the time of the case passes. So no play of it has passed: it was commanded and not observed, or
 * it has failed. Like Night, it has no clock and no file of its own.
 *
 * Borrows all that it is given.
 */
class DeviceNight
{
public:
    /** @param steadyNs of the steady signal's file: a command is taken at its end */
    DeviceNight(const journal::NightBegin& night, qint64 steadyNs, const NightOptions& options,
                Device& device, journal::JournalSink& sink);

    void begin(const Moment& now);
    void resume(const ResumePoint& point, const std::map<std::string, std::string>& environment,
                const Moment& now);

    /** The log has one more line. */
    void addLogLine(const std::string& line, const Moment& now);

    void interrupt(const Moment& now);

    /** Time passes; to be called often. */
    void tick(const Moment& now);

    bool isOver() const { return mState == State::Over; }

    /** Why the journal could not be written; empty when all of it was. */
    const std::string& problem() const { return mCourse.chronicle().problem(); }

    Progress progress() const { return mCourse.progress(); }

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
    void fail(const std::string& kind, const std::string& text);
    void endPlay();
    void enter(State state);
    void finish(journal::NightEnd::Reason reason);
    qint64 inStateNs() const { return mCourse.now().mSteadyNs - mSinceNs; }

    Course mCourse;
    Device& mDevice;
    qint64 mSteadyFileNs;
    qint64 mLongestCaseNs = 0;
    State mState = State::Waiting;
    qint64 mSinceNs = 0; ///< on the steady clock
    control::PlayRequest mRequest;
};

} // namespace run
