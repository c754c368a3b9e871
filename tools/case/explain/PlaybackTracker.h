#pragma once

#include "explain/Beam.h"

namespace explain {

/**
 * Follows what the simulator may be playing, sample by sample, as a beam search over hypotheses:
 * where several fit, because files or their periods are alike or a command may have come, all of
 * them are followed until what arrives decides. What a hypothesis assumes has a cost, and the
 * cheapest one counts as what was played.
 *
 * What bounds the search is in Beam and Costs.h. What is lost by it: play that looks like plain
 * repetition for a while and takes more than three commands, or a cut front and more than one, to
 * be explained from there on; and play with more than kMaxHypotheses beginnings that go on alike.
 * Such a recording may be called bad although it is good; one that is bad is never called good by
 * it.
 *
 * Value type: a search copies it and leaves the original alone. Borrows the plan.
 */
class PlaybackTracker
{
public:
    explicit PlaybackTracker(const PlayPlan& plan) : mBeam(plan) {}

    /** Where the simulator begins: at the first entry of the continuous configuration. */
    static PlaybackTracker atStart(const PlayPlan& plan);

    /**
     * Allows for any of the positions, too, as for those of a recording that is cut.
     * @param isAnyContinuous whether any configuration may be the continuous one there; else that
     *        takes a command of which nothing is known
     */
    void addCutFronts(const std::vector<Positions>& all, bool isAnyContinuous);

    /** At any of the positions, in every configuration that plays them. */
    PlaybackTracker movedTo(const std::vector<Positions>& all) const;

    /**
     * At the beginning of any configuration that begins with this content, with each number of
     * commands that may have been taken.
     */
    PlaybackTracker restarted(const SampleContent& content) const;

    /**
     * Lets those that are between two cases take their next command or leave it waiting.
     * @param commands all valid ones that were given so far
     * @param effect the next record, which is the first of a command that is taken
     */
    void offer(const std::vector<ControlCommand>& commands, const CommandEffect& effect);

    /** Has none of them take the first commands any more: what became of these is known. */
    void excludeCommands(size_t count);

    /** Whether one of them is about to begin a case. */
    bool isBetweenCases() const;

    bool empty() const { return mBeam.empty(); }
    const Beam& beam() const { return mBeam; }

    /** As of Beam. */
    bool allows(const SampleContent& content, std::optional<qint64> stepNs) const
    {
        return mBeam.allows(content, stepNs);
    }
    bool keep(const SampleContent& content, std::optional<qint64> stepNs);

    /** Whether one of them has its next sample so long after the one before. */
    bool allowsStep(qint64 stepNs) const;

    /** Keeps those for which this is true of a tracker of them alone; all if it is true for none.
     */
    void keepIf(const std::function<bool(PlaybackTracker alone)>& isRight);

    /**
     * Advances all by a sample.
     * @param arrival the record that was this sample, or should have been; without it the pass does
     *        not count it, and what was played before is forgotten
     * @param next what comes after it, if that is known: of the many configurations that an
     *        unknown command may bring, those that do not begin with it are left out
     */
    void advance(const std::optional<Arrival>& arrival = std::nullopt,
                 const SampleContent* next = nullptr);

    /** To be called before a sample is passed over that none of them allows. */
    void splitUnequal() { mBeam.splitUnequal(); }

    /** keep() and advance(). */
    bool take(const SampleContent& content, std::optional<qint64> stepNs,
              const SampleContent* next = nullptr);

    /** Whether all have the same past: what is said now of the samples so far holds. */
    bool isSettled() const { return PassHistory::agree(mBeam.all()); }

    /** Takes out the passes that have ended, oldest first: those of which all agree. */
    std::vector<PlayedPasses> takeEnded();

    /** Takes out all passes as the likeliest has them, the one that is being played included. */
    std::vector<PlayedPasses> breakOff(const Arrival& last);

    /** What arrives next begins a pass, wherever in its file it stands. */
    void forgetPasses();

    /** Follows what the other does, too. */
    void alsoFollow(const PlaybackTracker& other) { mBeam.insertOrMerge(other.mBeam.all()); }

    /** With these hypotheses instead of its own. */
    PlaybackTracker replacedBy(std::vector<Hypothesis> hypotheses) const;

    /** Requires: not empty(). */
    const Hypothesis& likeliest() const { return mBeam.likeliest(); }

    const PlayedFile& likeliestFile() const { return plan().fileOf(likeliest().mEntry); }

    /** ns from the last sample to the next of the likeliest; 0 when it is not known. */
    quint32 nextStep() const { return likeliestFile().stepAt(likeliest().mSample); }

private:
    const PlayPlan& plan() const { return mBeam.plan(); }
    PlayedPasses current(const Arrival& last) const;
    void beginPasses(const Arrival& arrival);
    std::vector<Hypothesis> removeEnded();
    void mergeAtSecondSample();
    void addUnknownCommands(const SampleContent* next);

    Beam mBeam;
    size_t mSamplesTaken = 0;
    bool mPastHasChanged = false; ///< since takeEnded() looked at it
};

} // namespace explain
