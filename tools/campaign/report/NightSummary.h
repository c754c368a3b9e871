#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "journal/Entries.h"

namespace report {

/** What became of a play, or of all plays of a case: of those the worst, which comes later here. */
enum class Outcome
{
    Passed,
    NotObserved, ///< commanded and answered, and nothing of its samples could be seen
    NotPlayed,   ///< it never began
    Unfinished,  ///< it began, and the night was cut off or interrupted before its end
    Failed,
    Count
};

/** "passed", "failed", "not observed", "not played", "not finished". */
const char* nameOf(Outcome outcome);

/** How many plays came to each end. */
class OutcomeCounts
{
public:
    void add(Outcome outcome) { ++mCounts[static_cast<size_t>(outcome)]; }
    size_t of(Outcome outcome) const { return mCounts[static_cast<size_t>(outcome)]; }

    /** Of all plays, those that were played to their end. */
    size_t ended() const;

private:
    std::array<size_t, static_cast<size_t>(Outcome::Count)> mCounts{};
};

/** Of the times from a command to its first sample. */
struct DelaySpread
{
    qint64 mMinNs;
    qint64 mMedianNs; ///< of an even number the lower one of the two in the middle
    qint64 mMaxNs;
};

struct PlaySummary
{
    size_t mCase = 0;    ///< index
    int mRepetition = 1; ///< of the case, from 1; goes on rising when the plan is played again
    Outcome mOutcome = Outcome::NotPlayed;
    int mAttempts = 0;        ///< more than 1 where an attempt was cut off
    qint64 mBeginNs = 0;      ///< of the last attempt, on the clock of the desk; 0: it never began
    qint64 mEndNs = 0;        ///< on the clock of the desk; 0: it did not end
    qint64 mFirstStampNs = 0; ///< of its samples; 0 where none arrived
    qint64 mLastStampNs = 0;
    quint64 mSamples = 0;
    std::optional<qint64> mDelayNs;
    quint64 mFindings = 0;                         ///< may be more than are listed
    std::vector<journal::Finding> mListedFindings; ///< those of attempts that were cut off included
};

enum class Grade
{
    Good,
    NotJudged, ///< no limit is known, or none holds here
    Bad,       ///< or not observed
};

/** What somebody measured in a case, held against what was to be expected. */
struct Assessment
{
    std::string mName;    ///< quantity and channel: "rms-half UA"; or a play
    std::string mVerdict; ///< in a word: "within"
    std::string mText;    ///< the largest error, when, and the limit
    Grade mGrade = Grade::Bad;
};

/** Of all plays of a case. */
struct CaseAssessment
{
    std::string mVerdict; ///< in words; empty where nothing was assessed
    std::vector<Assessment> mValues;
    std::vector<std::string> mRemarks; ///< what was found, and what may be the cause

    bool isThere() const { return !mVerdict.empty(); }
    size_t bad() const;
};

/** All plays of a case. */
struct CaseSummary
{
    journal::StagedCase mStaged;
    std::vector<size_t> mPlays; ///< indices, rising
    OutcomeCounts mCounts;
    Outcome mOutcome = Outcome::Passed;
    quint64 mFindings = 0;
    std::optional<DelaySpread> mDelays;
    CaseAssessment mAssessment; ///< not from the journal
};

/** From the start, or from going on after a cut, to the next cut or the end. */
struct Session
{
    qint64 mBeginNs = 0;
    qint64 mEndNs = 0; ///< of its last step
    std::map<std::string, std::string> mEnvironment;
};

enum class NightState
{
    CutOff,  ///< its last line is missing
    Running, ///< the same, and its journal is being written; see writeReports()
    Done,
    Interrupted,
    FirstFailure,
    GaveUp,
};

/** What a night came to, computed from its journal; what was measured is added. */
struct NightSummary
{
    journal::NightBegin mNight; ///< empty where the journal has no whole line
    NightState mState = NightState::CutOff;
    std::string mReason; ///< why it gave up
    std::vector<Session> mSessions;
    std::vector<PlaySummary> mPlays;
    std::vector<CaseSummary> mCases;
    std::vector<journal::Finding> mOutside; ///< before the first play or after the last one
    std::vector<journal::ProgramEnded> mDeaths;
    std::vector<std::string> mRemarks; ///< worth knowing, and nobody's fault
    size_t mProgramRuns = 0;
    OutcomeCounts mCounts;
    quint64 mFindings = 0; ///< of all plays, and outside
    quint64 mSamples = 0;
    std::optional<DelaySpread> mDelays;
    std::string mLimits;            ///< that measured values were held against; may be empty
    std::string mAssessmentProblem; ///< why there is no assessment though it was made

    /** What a play that is good comes to: on a device nothing can be observed. */
    Outcome wanted() const { return mNight.mIsObserved ? Outcome::Passed : Outcome::NotObserved; }

    /** Cases with measured values held against limits. */
    size_t assessedCases() const;

    size_t badAssessments() const;

    /** Done, each play came to what is wanted, nothing was found outside, no assessment is bad. */
    bool isGood() const;
};

/**
 * A play with a finding has failed, whatever the journal says of it, and on a device none has
 * passed.
 *
 * @throws CaseError when the entries are not those of a night
 */
NightSummary summarize(const std::vector<journal::Entry>& entries);

/** Exit status: 0 when it is good, 130 when it was interrupted, else 1. */
int statusOf(const NightSummary& night);

} // namespace report
