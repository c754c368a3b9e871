#include "run/PlaySchedule.h"

#include <algorithm>

namespace run {

PlaySchedule::PlaySchedule(const journal::NightBegin& night, const NightOptions& options,
                           qint64 overheadNs, journal::JournalSink& sink)
    : mNight(night), mOptions(options), mOverheadNs(overheadNs), mOrder(night), mPlayJournal(sink)
{
}

void PlaySchedule::setTime(const Moment& now)
{
    mNow = now;
    mPlayJournal.setTime(now);
}

void PlaySchedule::begin()
{
    mPlayJournal.write(mNight);
}

void PlaySchedule::resume(const ResumePoint& point,
                          const std::map<std::string, std::string>& environment)
{
    mPlayJournal.write(journal::Resumed{environment});
    mPlayJournal.setAllFindings(point.mAllFindings);
    mNext = point.mPlay;
    mRun = point.mRuns;
    mHasFailed = point.mHasFailed;
    mFindingsOfNext = point.mFindings;
}

void PlaySchedule::beginRun()
{
    mPlayJournal.write(journal::ProgramStarted{++mRun});
}

void PlaySchedule::endRun(const std::string& how)
{
    mPlayJournal.write(journal::ProgramEnded{mRun, how});
}

void PlaySchedule::beginNext()
{
    mPlayJournal.beginPlay(mNext, std::exchange(mFindingsOfNext, 0));
    mPlayBeganNs = mNow.mSteadyNs;
    ++mNext;
    mPlaysLeftNs = 0;
    for (int play = mNext; play % mOrder.playsPerRound() != 0; ++play) {
        mPlaysLeftNs += playNs(play);
    }
}

journal::PlayVerdict PlaySchedule::endPlay(const journal::PlayEnd& end)
{
    const journal::PlayVerdict verdict = mPlayJournal.endPlay(end);
    mHasFailed = mHasFailed || verdict == journal::PlayVerdict::Failed;
    return verdict;
}

journal::NightEnd::Reason PlaySchedule::reason() const
{
    return isFailureFound() ? journal::NightEnd::Reason::FirstFailure
                            : journal::NightEnd::Reason::Done;
}

qint64 PlaySchedule::playNs(int play) const
{
    return mNight.mGapNs + mOrder.caseOf(play).mDurationNs + mOverheadNs;
}

Progress PlaySchedule::progress() const
{
    Progress progress;
    progress.mFindings = mPlayJournal.allFindings();
    progress.mEndsAtNs = mNow.mWallNs;
    if (mPlayJournal.play()) {
        const int play = *mPlayJournal.play();
        progress.mCase = &mOrder.caseOf(play);
        progress.mPlay = play;
        progress.mCaseIndex = mOrder.caseIndexOf(play);
        progress.mRepetition = mOrder.repetitionOf(play);
        progress.mLeftNs = std::max<qint64>(playNs(play) - (mNow.mSteadyNs - mPlayBeganNs), 0);
        progress.mEndsAtNs += progress.mLeftNs + mPlaysLeftNs + mNight.mGapNs;
    }
    return progress;
}

} // namespace run
