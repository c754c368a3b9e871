#pragma once

#include "run/PlaySchedule.h"

namespace run {

/**
 * Base class of a night at the desk or on a device. It plays by a schedule and is told the time and
 * all events. It has no clock.
 *
 * Borrows the night and the journal.
 */
class ScheduledNight
{
public:
    ScheduledNight(const ScheduledNight&) = delete;
    ScheduledNight& operator=(const ScheduledNight&) = delete;
    virtual ~ScheduledNight() = default;

    void begin(const Moment& now);

    /** Continues after the night was cut off. */
    void resume(const ResumePoint& point, const std::map<std::string, std::string>& environment,
                const Moment& now);

    /** Ends the night, at the user's request; the second call ends it at once. */
    virtual void interrupt(const Moment& now) = 0;

    /** Lets time pass. Call it often, after all events up to now. */
    virtual void tick(const Moment& now) = 0;

    virtual bool isOver() const = 0;

    /** Why the journal could not be written; empty if it was. */
    const std::string& problem() const { return mSchedule.playJournal().problem(); }

    Progress progress() const { return mSchedule.progress(); }

protected:
    /** @param overheadNs estimated time that a play takes besides the gap and its case */
    ScheduledNight(const journal::NightBegin& night, const NightOptions& options, qint64 overheadNs,
                   journal::JournalSink& sink)
        : mSchedule(night, options, overheadNs, sink)
    {
    }

    PlaySchedule& schedule() { return mSchedule; }
    const PlaySchedule& schedule() const { return mSchedule; }
    PlayJournal& playJournal() { return mSchedule.playJournal(); }
    const PlayJournal& playJournal() const { return mSchedule.playJournal(); }

private:
    PlaySchedule mSchedule;
};

} // namespace run
