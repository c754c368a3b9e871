#pragma once

#include "run/PlaySchedule.h"

namespace run {

/**
 * What every night has in common, at the desk and on a device: it plays by a schedule, is told the
 * time and what happens, and ends. It has no clock of its own.
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

    /** Goes on after the night was cut off. */
    void resume(const ResumePoint& point, const std::map<std::string, std::string>& environment,
                const Moment& now);

    /** The user wants it to end; the second time, at once. */
    virtual void interrupt(const Moment& now) = 0;

    /** Time passes; to be called often, after all that has happened by now. */
    virtual void tick(const Moment& now) = 0;

    virtual bool isOver() const = 0;

    /** Why the journal could not be written; empty when all of it was. */
    const std::string& problem() const { return mSchedule.playJournal().problem(); }

    Progress progress() const { return mSchedule.progress(); }

protected:
    /** @param overheadNs what a play takes beside the gap and its case, about */
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
