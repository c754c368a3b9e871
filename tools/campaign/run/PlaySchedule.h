#pragma once

#include "run/PlayJournal.h"
#include "run/PlayOrder.h"

namespace run {

/** Options of the command line that are not in the plan. */
struct NightOptions
{
    std::optional<qint64> mStartAtNs; ///< on the wall clock; none: at once
};

/** The progress of a night. */
struct Progress
{
    const journal::StagedCase* mCase = nullptr; ///< null: between plays
    int mPlay = 0;
    size_t mCaseIndex = 0;
    int mRepetition = 1;  ///< of the case, from 1
    qint64 mLeftNs = 0;   ///< until the play ends, estimated
    qint64 mEndsAtNs = 0; ///< end of the night on the wall clock, estimated
    quint64 mFindings = 0;
};

/**
 * The schedule of a night, at the desk or on a device: the current and the next play, the run of
 * the program, and why the night ends. Writes these into the journal. Borrows the night and the
 * journal.
 */
class PlaySchedule
{
public:
    /** @param overheadNs estimated time that a play takes besides the gap and its case */
    PlaySchedule(const journal::NightBegin& night, const NightOptions& options, qint64 overheadNs,
                 journal::JournalSink& sink);

    /** Sets the current time. Call it first at each moment. */
    void setTime(const Moment& now);

    void begin();

    /** Continues after the night was cut off. */
    void resume(const ResumePoint& point, const std::map<std::string, std::string>& environment);

    /** Whether it is time to begin. */
    bool isDue() const { return !mOptions.mStartAtNs || mNow.mWallNs >= *mOptions.mStartAtNs; }

    /** Whether there is a play after the current or the last one. */
    bool hasNext() const { return !isFailureFound() && mOrder.has(mNext); }

    /** Notes the next start of the program. */
    void beginRun();

    /** @param how it ended, in words; empty if it was stopped as planned */
    void endRun(const std::string& how);

    /** Run of the program, from 1; 0 before the first start. */
    int run() const { return mRun; }

    /** Begins the next play. Requires: hasNext(). */
    void beginNext();

    /** Counts the time of the current play from now on: until now the program was loading. */
    void restartPlayTime() { mPlayBeganNs = mNow.mSteadyNs; }

    /** The case of the current play. Requires: there is one. */
    const journal::StagedCase& currentCase() const { return mOrder.caseOf(mNext - 1); }

    /** Ends the current play. */
    journal::PlayVerdict endPlay(const journal::PlayEnd& end);

    /** Why the night ends. Requires: there is no next play. */
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
    quint64 mFindingsOfNext = 0; ///< findings of the next play from before the night was cut off
    bool mHasFailed = false;
    qint64 mPlayBeganNs = 0; ///< on the steady clock
    qint64 mPlaysLeftNs = 0; ///< estimated duration of all plays after the current one
};

} // namespace run
