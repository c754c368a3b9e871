#include "run/Course.h"

#include <algorithm>

namespace run {

Course::Course(const journal::NightBegin& night, const NightOptions& options, qint64 overheadNs,
               journal::JournalSink& sink)
    : mNight(night),
      mOptions(options),
      mOverheadNs(overheadNs),
      mOrder(night, options.mUntilFailure),
      mChronicle(sink)
{
}

void Course::setTime(const Moment& now)
{
    mNow = now;
    mChronicle.setTime(now);
}

void Course::begin()
{
    mChronicle.write(mNight);
}

void Course::resume(const ResumePoint& point, const std::map<std::string, std::string>& environment)
{
    mChronicle.write(journal::Resumed{environment});
    mChronicle.setAllFindings(point.mAllFindings);
    mNext = point.mPlay;
    mFindingsOfNext = point.mFindings;
}

void Course::beginNext()
{
    mChronicle.beginPlay(mNext, std::exchange(mFindingsOfNext, 0));
    mPlayBeganNs = mNow.mSteadyNs;
    ++mNext;
    mPlaysLeftNs = 0;
    for (int play = mNext; play % mOrder.playsPerRound() != 0; ++play) {
        mPlaysLeftNs += playNs(play);
    }
}

journal::PlayVerdict Course::endPlay(const journal::PlayEnd& end)
{
    const journal::PlayVerdict verdict = mChronicle.endPlay(end);
    mHasFailed = mHasFailed || verdict == journal::PlayVerdict::Failed;
    return verdict;
}

journal::NightEnd::Reason Course::reason() const
{
    return isFailureFound() ? journal::NightEnd::Reason::FirstFailure
                            : journal::NightEnd::Reason::Done;
}

qint64 Course::playNs(int play) const
{
    return mNight.mGapNs + mOrder.caseOf(play).mDurationNs + mOverheadNs;
}

Progress Course::progress() const
{
    Progress progress;
    progress.mFindings = mChronicle.allFindings();
    progress.mEndsAtNs = mNow.mWallNs;
    if (mChronicle.play()) {
        const int play = *mChronicle.play();
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
