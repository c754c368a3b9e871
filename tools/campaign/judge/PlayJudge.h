#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "explain/Judge.h"
#include "judge/ArrivalCheck.h"
#include "judge/SampleRing.h"

namespace judge {

/** Something is wrong. */
struct Finding
{
    std::string mKind; ///< as explain names it, or kNotPlanned
    std::string mText;
    size_t mRecord = 0;             ///< in the run, from 0
    size_t mCount = 1;              ///< samples, jumps or commands
    std::optional<qint64> mStampNs; ///< of that record, if it is one that arrived
    bool mIsOfRun = false;          ///< of the run as a whole, not of a record
};

/** The play that was expected is over. */
struct Played
{
    enum class Ending
    {
        Complete,   ///< all of it arrived, and the steady signal after it
        Incomplete, ///< the steady signal plays, and not all of it arrived
        Lost,       ///< what is commanded and what is played do not agree any more
    };

    Ending mEnding = Ending::Complete;
    qint64 mFirstStampNs = 0; ///< of its samples; 0 where none arrived
    qint64 mLastStampNs = 0;
    quint64 mSamples = 0;           ///< that arrived
    std::optional<qint64> mDelayNs; ///< from the command to the arrival of its first sample
};

using Outcome = std::variant<Finding, Played>;

/** A configuration was played that nobody planned: neither the steady signal nor the case. */
inline constexpr const char* kNotPlanned = "notPlanned";

/** Blocks arrived too late, or too early: see ArrivalCheck. */
inline constexpr const char* kOffTime = "offTime";

/**
 * Judges one run of the program: follows the plays of the plan, one at a time, in what arrives. It
 * says of each finding whether it comes before or after the end of a play. Data goes one way:
 * events and records go in as they come, outcomes come out in the order of the records.
 *
 * A finding belongs to the play in whose range it is: after the last sample of the play before, up
 * to its own last sample. Samples that come twice belong to the play that they come from; findings
 * about the whole run belong to the current play. Blocks off time are one finding of a play, as
 * soon as it is certain that they are in its range; the steady signal that is still off time after
 * it is none of the next play.
 *
 * Borrows the plan.
 */
class PlayJudge : private explain::ExplanationOutput
{
public:
    explicit PlayJudge(const explain::PlayPlan& plan);

    /** What the next command asks for: this configuration once, so many samples. */
    void expect(int configuration, quint64 samples);

    /** Takes the event that happened next. Add that of a block before its records. */
    void add(const explain::Event& event);

    /** Takes the records that arrived next. */
    void add(const SampleRecord* records, size_t count);

    /** The run is over: judges what is left. Nothing may be added after it. */
    void finish(size_t restBytes);

    /** Takes out what was found out since the last call. */
    std::vector<Outcome> take();

    /** What arrived of the play that is expected. */
    const Played& soFar() const { return mPlayed; }

    /** How much signal has arrived, in ns of its own time; jumps of the time do not count. */
    qint64 heardNs() const { return mHeardNs; }

    /** heardNs() when the last block off time had arrived; 0 when none was. */
    qint64 offTimeNs() const { return mOffTimeNs; }

    /** Whether the driver has taken any sample, as far as the events tell. */
    bool hasBegun() const { return mJudge.recordsInEvents() > 0; }

    const SampleRing& samples() const { return mSamples; }

private:
    struct Expected
    {
        int mConfiguration;
        quint64 mSamples;
        size_t mMinEnd; ///< in the run: what arrived before it is not after the end of the play
    };

    void add(const explain::PlayedSegment& segment) override;
    void add(const explain::CommandOutcome& command) override;
    void add(const explain::Finding& finding) override;
    void add(const explain::Verdict& verdict) override;

    void countHeard(const SampleRecord* records, size_t count);
    void addFinding(Finding finding);
    bool belongsToPlayed(const Finding& finding) const;
    void closePlay();
    void judgeArrivals();
    void findOffTime(std::optional<qint64> untilStampNs, size_t* index);
    void endPlay(Played::Ending ending, size_t index);
    bool plays(const explain::PlayedSegment& segment, int configuration) const;
    bool isBackToSteady() const;

    const explain::PlayPlan& mPlan;
    SampleRing mSamples;
    explain::Judge mJudge;
    ArrivalCheck mArrivals;
    bool mIsOffTimeFound = false; ///< since the last play
    qint64 mHeardNs = 0;
    qint64 mOffTimeNs = 0;
    std::optional<qint64> mLastStampNs;
    std::optional<Expected> mExpected;
    Played mPlayed;
    bool mHasBegun = false;          ///< the first sample of the play has arrived
    std::optional<size_t> mPlayedAt; ///< index among the outcomes at which the play was complete
    bool mIsLost = false;
    std::vector<Outcome> mOutcomes;
};

} // namespace judge
