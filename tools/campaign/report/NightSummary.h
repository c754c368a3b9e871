#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "journal/Entries.h"

namespace report {

/** The result of a play, or the worst one of all plays of a case. From best to worst. */
enum class Outcome
{
    Passed,
    NotObserved, ///< commanded and answered, but its samples were not observed
    NotPlayed,   ///< it never began
    Unfinished,  ///< it began, but the night was cut off or interrupted before its end
    Failed,
    Count
};

/** "passed", "failed", "not observed", "not played", "not finished". */
const char* nameOf(Outcome outcome);

/** Number of plays with each outcome. */
class OutcomeCounts
{
public:
    void add(Outcome outcome) { ++mCounts[static_cast<size_t>(outcome)]; }
    size_t of(Outcome outcome) const { return mCounts[static_cast<size_t>(outcome)]; }

    /** Number of plays that were played to their end. */
    size_t ended() const;

private:
    std::array<size_t, static_cast<size_t>(Outcome::Count)> mCounts{};
};

/** Spread of the delays from a command to its first sample. */
struct DelaySpread
{
    qint64 mMinNs;
    qint64 mMedianNs; ///< for an even number of delays, the lower one of the middle two
    qint64 mMaxNs;
};

struct PlaySummary
{
    size_t mCase = 0;    ///< index
    int mRepetition = 1; ///< of the case, from 1; continues when the plan is repeated
    Outcome mOutcome = Outcome::NotPlayed;
    int mAttempts = 0;        ///< more than 1 if an attempt was cut off
    qint64 mBeginNs = 0;      ///< of the last attempt, on the clock of the desk; 0: it never began
    qint64 mEndNs = 0;        ///< on the clock of the desk; 0: it did not end
    qint64 mFirstStampNs = 0; ///< of its samples; 0 if none arrived
    qint64 mLastStampNs = 0;
    quint64 mSamples = 0;
    std::optional<qint64> mDelayNs;
    quint64 mFindings = 0; ///< may be more than the listed ones
    std::vector<journal::Finding>
        mListedFindings; ///< including those of attempts that were cut off
};

enum class Grade
{
    Good,
    NotJudged, ///< there is no limit, or none applies here
    Bad,       ///< or not observed
};

/** The comparison of measured values with expected ones, for one quantity and channel or a play. */
struct Assessment
{
    std::string mName;    ///< quantity and channel: "rms-half UA"; or a play
    std::string mVerdict; ///< in a word: "within"
    std::string mText;    ///< the largest error, its time, and the limit
    Grade mGrade = Grade::Bad;
};

/** Of all plays of a case. */
struct CaseAssessment
{
    std::string mVerdict; ///< in words; empty if nothing was assessed
    std::vector<Assessment> mValues;
    std::vector<std::string> mRemarks; ///< lost values and possible causes

    bool isThere() const { return !mVerdict.empty(); }
    size_t bad() const;
};

/** All plays of a case. */
struct CaseSummary
{
    journal::StagedCase mStaged;
    std::vector<size_t> mPlays; ///< indices in ascending order
    OutcomeCounts mCounts;
    Outcome mOutcome = Outcome::Passed;
    quint64 mFindings = 0;
    std::optional<DelaySpread> mDelays;
    CaseAssessment mAssessment; ///< not from the journal
};

/** A part of the night: from the start or a resumption to the next cut or the end. */
struct Session
{
    qint64 mBeginNs = 0;
    qint64 mEndNs = 0; ///< of its last step
    std::map<std::string, std::string> mEnvironment;
};

enum class NightState
{
    CutOff,  ///< its last line is missing
    Running, ///< its last line is missing, but its journal is being written; see writeReports()
    Done,
    Interrupted,
    FirstFailure,
    GaveUp,
};

/** The results of a night, computed from its journal; the assessment is added afterwards. */
struct NightSummary
{
    journal::NightBegin mNight; ///< empty if the journal has no complete line
    NightState mState = NightState::CutOff;
    std::string mReason; ///< why it gave up
    std::vector<Session> mSessions;
    std::vector<PlaySummary> mPlays;
    std::vector<CaseSummary> mCases;
    std::vector<journal::Finding> mOutside; ///< before the first play or after the last one
    std::vector<journal::ProgramEnded> mDeaths;
    std::vector<std::string> mRemarks; ///< worth knowing, but no faults
    size_t mProgramRuns = 0;
    OutcomeCounts mCounts;
    quint64 mFindings = 0; ///< of all plays and outside the plays
    quint64 mSamples = 0;
    std::optional<DelaySpread> mDelays;
    std::string mLimits;            ///< name of the limits for measured values; may be empty
    std::string mAssessmentProblem; ///< why an existing assessment is not used

    /** The outcome of a good play: on a device nothing can be observed. */
    Outcome wanted() const { return mNight.mIsObserved ? Outcome::Passed : Outcome::NotObserved; }

    /** Number of cases with judged measured values. */
    size_t assessedCases() const;

    size_t badAssessments() const;

    /**
     * Done, every play has the wanted outcome, no finding outside the plays, no bad assessment, and
     * none that cannot be used.
     */
    bool isGood() const;
};

/**
 * A play with a finding has failed, whatever its verdict in the journal. On a device no play has
 * passed.
 *
 * @throws CaseError if the entries are not those of a night
 */
NightSummary summarize(const std::vector<journal::Entry>& entries);

/** Exit status after an interrupt. */
constexpr int kStatusInterrupted = 130;

/** Exit status: 0 if it is good, 130 if it was interrupted, otherwise 1. */
int statusOf(const NightSummary& night);

} // namespace report
