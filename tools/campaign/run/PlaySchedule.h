#pragma once

#include "run/PlayJournal.h"
#include "run/PlayOrder.h"

namespace run {

/** What the command line asks of a night beyond its plan. */
struct NightOptions
{
    std::optional<qint64> mStartAtNs; ///< on the wall clock; none: at once
};

/** How far a night is. */
struct Progress
{
    const journal::StagedCase* mCase = nullptr; ///< null: between plays
    int mPlay = 0;
    size_t mCaseIndex = 0;
    int mRepetition = 1;  ///< of the case, from 1
    qint64 mLeftNs = 0;   ///< until the play ends, about
    qint64 mEndsAtNs = 0; ///< of the whole night, on the wall clock, about
    quint64 mFindings = 0;
};

/**
 * The schedule of a night, at the desk or on a device: which play is current, which is next, which
 * run of the program it is, and why the night ends. Writes that into the journal. Borrows the night
 * and the journal.
 */
class PlaySchedule
{
public:
    /** @param overheadNs what a play takes beside the gap and its case, about */
    PlaySchedule(const journal::NightBegin& night, const NightOptions& options, qint64 overheadNs,
                 journal::JournalSink& sink);

    /** To be called before anything else that happens at this moment. */
    void setTime(const Moment& now);

    void begin();

    /** Goes on after the night was cut off. */
    void resume(const ResumePoint& point, const std::map<std::string, std::string>& environment);

    /** Whether it is time to begin. */
    bool isDue() const { return !mOptions.mStartAtNs || mNow.mWallNs >= *mOptions.mStartAtNs; }

    /** Whether there is a play after the current or the last one. */
    bool hasNext() const { return !isFailureFound() && mOrder.has(mNext); }

    /** The program is started once more. */
    void beginRun();

    /** @param how in words; empty when it was stopped as planned */
    void endRun(const std::string& how);

    /** Of the program, from 1; 0: it was not started yet. */
    int run() const { return mRun; }

    /** Begins the next play. Requires: hasNext(). */
    void beginNext();

    /** Of the current play. Requires: there is one. */
    const journal::StagedCase& currentCase() const { return mOrder.caseOf(mNext - 1); }

    /** Ends the current play. */
    journal::PlayVerdict endPlay(const journal::PlayEnd& end);

    /** Why the night ends when there is no next play. */
    journal::NightEnd::Reason reason() const;

    PlayJournal& playJournal() { return mPlayJournal; }
    const PlayJournal& playJournal() const { return mPlayJournal; }
    const Moment& now() const { return mNow; }
    qint64 gapNs() const { return mNight.mGapNs; }

    Progress progress() const;

private:
    bool isFailureFound() const { return mNight.mUntilFailure && mHasFailed; }
    qint64 playNs(int play) const;

    const journal::NightBegin& mNight;
    NightOptions mOptions;
    qint64 mOverheadNs;
    PlayOrder mOrder;
    PlayJournal mPlayJournal;
    Moment mNow;
    int mNext = 0;
    int mRun = 0;                ///< of the program
    quint64 mFindingsOfNext = 0; ///< that it has from before the night was cut off
    bool mHasFailed = false;
    qint64 mPlayBeganNs = 0; ///< on the steady clock
    qint64 mPlaysLeftNs = 0; ///< that all plays after the current one take, about
};

} // namespace run
