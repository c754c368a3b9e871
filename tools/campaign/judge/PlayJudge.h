#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "explain/Judge.h"
#include "judge/ArrivalCheck.h"
#include "judge/SampleRing.h"

namespace judge {

/** An error in the stream or the run. */
struct Finding
{
    std::string mKind; ///< a kind of explain, kNotPlanned or kOffTime
    std::string mText;
    size_t mRecord = 0;             ///< in the run, from 0
    size_t mCount = 1;              ///< samples, jumps or commands
    std::optional<qint64> mStampNs; ///< of that record, if it arrived
    bool mIsOfRun = false;          ///< about the run as a whole, not about a record
};

/** The end of the expected play. */
struct Played
{
    enum class Ending
    {
        Complete,   ///< all samples arrived, and the steady signal after them
        Incomplete, ///< the steady signal plays, but not all samples arrived
        Lost,       ///< the program no longer plays what was commanded
    };

    Ending mEnding = Ending::Complete;
    qint64 mFirstStampNs = 0; ///< of its samples; 0 if none arrived
    qint64 mLastStampNs = 0;
    quint64 mSamples = 0;           ///< that arrived
    std::optional<qint64> mDelayNs; ///< from the command to the arrival of its first sample
};

using Outcome = std::variant<Finding, Played>;

/** The program played neither the steady signal nor the expected case. */
inline constexpr const char* kNotPlanned = "notPlanned";

/** Blocks arrived too late, or too early: see ArrivalCheck. */
inline constexpr const char* kOffTime = "offTime";

/**
 * Judges one run of the program: follows the plays of the plan, one at a time, in the samples that
 * arrive. Events and records go in as they arrive; outcomes come out in the order of the records,
 * so each finding is before or after the end of a play.
 *
 * A finding belongs to the play whose range it is in: from the last sample of the previous play to
 * its own last sample. Samples that come twice belong to the play that they are from. Findings
 * about the whole run belong to the current play. All off-time blocks of a play are one finding,
 * added as soon as it is certain that they are in its range. If the steady signal after a play is
 * still off time, that is no finding of the next play.
 *
 * Borrows the plan.
 */
class PlayJudge : private explain::ExplanationOutput
{
public:
    explicit PlayJudge(const explain::PlayPlan& plan);

    /** Announces the next command: it plays this configuration once, with this many samples. */
    void expect(int configuration, quint64 samples);

    /** Adds the next event. Add that of a block before its records. */
    void add(const explain::Event& event);

    /** Adds the next records. */
    void add(const SampleRecord* records, size_t count);

    /** Judges the rest at the end of the run. Nothing may be added after it. */
    void finish(size_t restBytes);

    /** @return the outcomes since the last call */
    std::vector<Outcome> take();

    /** What has arrived of the expected play. */
    const Played& soFar() const { return mPlayed; }

    /** Duration of the signal that has arrived, by its time stamps without their jumps. */
    qint64 receivedNs() const { return mReceivedNs; }

    /** receivedNs() when the last block off time had arrived; 0 when none was. */
    qint64 offTimeNs() const { return mOffTimeNs; }

    /** Whether the driver has taken any sample, according to the events. */
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

    void countReceived(const SampleRecord* records, size_t count);
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
    qint64 mReceivedNs = 0;
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
