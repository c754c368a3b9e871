#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "ControlCommand.h"
#include "explain/PlayPlan.h"

namespace explain {

/** When the first sample that a command brought was met. */
struct CommandEffect
{
    qint64 mArrivalNs; ///< of the block with that sample
    qint64 mStampNs;   ///< its time stamp
};

/** A record that arrived: its place in the recording, from 0, and its time stamp. */
struct Arrival
{
    size_t mRecord;
    qint64 mStampNs;
};

/** Where a pass begins. */
struct PassStart
{
    Arrival mFirst;
    size_t mSample; ///< in its file; not 0 where the pass is cut
};

/** A pass that was played, to its end or so far, as the likeliest answers have it. */
struct PlayedPass
{
    size_t mFile;
    std::set<int> mConfigurations; ///< every one that fits
    size_t mKnownCommands;         ///< as in Hypothesis; so the others
    int mUnknownCommands;
    CommandEffect mLastEffect;
    PassStart mStart;
    size_t mLastSample; ///< in its file
    qint64 mLastStampNs;
};

/** A pass that has ended and those before it, back to the last of which all answers agree. */
struct EndedPass
{
    PlayedPass mPass;
    int mCost;     ///< of the likeliest answer that ended it
    size_t mCount; ///< of these passes
    std::shared_ptr<const EndedPass> mBefore;
};

/**
 * One answer to the question where the simulator is in its plan: about to play a sample of an
 * entry. What cannot be known yet is kept open.
 */
struct Hypothesis
{
    int mEntry;
    size_t mSample; ///< next to be played, in the entry's file
    /** Which of the repetitions this is, from 1: at least and at most. */
    quint32 mMinRepetition;
    quint32 mMaxRepetition;
    std::set<int> mContinuous;   ///< what may follow when the configuration is played through
    int mCost = 0;               ///< how unlikely it is: see Hypotheses
    size_t mKnownCommands = 0;   ///< of those that were given, how many were taken
    int mUnknownCommands = 0;    ///< that must have been given for this to be true
    CommandEffect mLastEffect{}; ///< of the last known command

    std::optional<PassStart> mStart;         ///< of its pass, once a sample of that arrived
    std::shared_ptr<const EndedPass> mEnded; ///< what was not taken yet; null when nothing

    /** Whether it allows for all that the other, at the same place, does, and is as likely. */
    bool covers(const Hypothesis& other) const;

    /** Lets its pass begin where the other's does: so it was told. */
    void beginAs(const Hypothesis& other);
};

/**
 * All answers that fit what has arrived so far and are likely: a command that begins with the
 * same samples shows only later, so what is less likely is kept for a while. It costs 1 to leave
 * a command waiting that was given, and 2 to assume one of which nothing is known.
 *
 * Value type; borrows the plan.
 */
class Hypotheses
{
public:
    /** Where the simulator begins: at the first entry of the continuous configuration. */
    static Hypotheses atStart(const PlayPlan& plan);

    /** Allows for any of the places, too, as for less likely ones. */
    void addPlaces(const std::vector<Place>& places);

    /** At any of the places, in every configuration that plays them. */
    Hypotheses movedTo(const std::vector<Place>& places) const;

    /** At the beginning of any configuration, the likeliest's case left as it is. */
    Hypotheses restarted() const;

    /**
     * Lets those that are between two cases take their next command or leave it waiting.
     * @param commands all valid ones that were given so far
     * @param effect the next record, which is the first of a command that is taken
     */
    void offer(const std::vector<ControlCommand>& commands, const CommandEffect& effect);

    /** Gives up waiting for the likeliest's next command. */
    void giveUpCommand();

    /** Whether one of them is about to begin a case. */
    bool isBetweenCases() const;

    bool empty() const { return mAll.empty(); }

    /**
     * Whether one of them has this sample next.
     * @param stepNs since the sample before; without it any step will do
     */
    bool allow(const SampleContent& content, std::optional<qint64> stepNs) const;

    /** Keeps those that allow() it; false when none does, and nothing is changed then. */
    bool keep(const SampleContent& content, std::optional<qint64> stepNs);

    /** Whether one of them has its next sample so long after the one before. */
    bool allowStep(qint64 stepNs) const;

    /** Keeps those for which this is right when they are alone; all if it is for none. */
    void keepIf(const std::function<bool(const Hypotheses&)>& isRight);

    /**
     * Lets all go on by a sample.
     * @param arrival the record that was this sample, or should have been; without it the pass does
     *        not count it
     */
    void advance(const std::optional<Arrival>& arrival = std::nullopt);

    /** keep() and advance(). */
    bool take(const SampleContent& content, std::optional<qint64> stepNs);

    /**
     * Takes out the passes that have ended, oldest first: those of which all answers agree or which
     * are too many to wait longer.
     * @param anyway what the likeliest says now shall hold
     */
    std::vector<PlayedPass> takeEnded(bool anyway);

    /** Takes out all passes, the one that is being played as it is so far. */
    std::vector<PlayedPass> breakOff(qint64 lastStampNs);

    /** What arrives next begins a pass, wherever in its file it stands. */
    void forgetPasses();

    /**
     * Goes on by the samples that were lost when the next one has a stamp that long after the
     * last. Those without a sample at that very time are dropped, so none may be left.
     * @return how many samples were lost
     */
    size_t skipTime(qint64 gapNs);

    /** Requires: not empty(). */
    const Hypothesis& likeliest() const;

    const PlayedFile& likeliestFile() const { return mPlan->fileOf(likeliest().mEntry); }

    /** ns from the last sample to the next of the likeliest; 0 when it is not known. */
    quint32 nextStep() const { return likeliestFile().stepAt(likeliest().mSample); }

private:
    /** A way over lost samples. */
    struct Path
    {
        Hypothesis mAt;
        qint64 mLeftNs; ///< from the sample before mAt to the next that arrived; 0 at it
        size_t mLost;
    };

    explicit Hypotheses(const PlayPlan& plan) : mPlan(&plan) {}

    bool fits(const Hypothesis& it, const SampleContent& content,
              std::optional<qint64> stepNs) const;
    bool hasEnded(const Hypothesis& it) const;
    PlayedPass passOf(const Hypothesis& it, qint64 lastStampNs) const;
    PlayedPass current(qint64 lastStampNs) const;
    void noteEnds(qint64 stampNs);
    void replaceEnded();
    void addUnknownCommands();
    void addCommanded(Hypothesis it, const ControlCommand& command);
    void addFollowing(const Hypothesis& ended);
    void addContinuous(const Hypothesis& ended);
    void addStarts(const Hypothesis& before);
    void addStart(Hypothesis it, int entry, std::set<int> continuous);
    void add(Hypothesis added);
    void keepLikeliest();
    void continuePath(Path path, std::vector<Path>* open) const;
    int leastCost() const;

    const PlayPlan* mPlan;
    std::vector<Hypothesis> mAll;
};

} // namespace explain
