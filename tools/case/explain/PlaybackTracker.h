#pragma once

#include "explain/Beam.h"

namespace explain {

/**
 * Follows what the simulator may be playing, sample by sample, as a beam search over hypotheses. If
 * several fit, because files or periods are equal or a command may have come, all of them are
 * followed until later samples decide. Assumptions of a hypothesis have costs; the cheapest
 * hypothesis counts as what was played.
 *
 * Beam and Costs.h bound the search. These bounds lose two cases: playing that looks like plain
 * repetition for a while, and whose explanation from there on takes more than three commands, or a
 * cut front and more than one command; and playing with more than kMaxHypotheses equal beginnings.
 * Such a good recording may be called bad, but never a bad one good.
 *
 * Value type: a search works on a copy. Borrows the plan.
 */
class PlaybackTracker
{
public:
    explicit PlaybackTracker(const PlayPlan& plan) : mBeam(plan) {}

    /** Where the simulator begins: at the first entry of the continuous configuration. */
    static PlaybackTracker atStart(const PlayPlan& plan);

    /**
     * Adds hypotheses at these positions, as for a recording whose beginning is cut off.
     * @param isAnyContinuous whether any configuration may be the continuous one there; otherwise
     * that costs an unknown command
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
     * Lets the hypotheses between two cases take their next command or leave it waiting.
     * @param commands all valid commands so far
     * @param effect the next record, which is the first one of a command that is taken
     * @param costOfWaiting of leaving it waiting, as in Costs.h
     */
    void offer(const std::vector<ControlCommand>& commands, const CommandEffect& effect,
               int costOfWaiting);

    /**
     * Excludes the first commands: their outcome is known, so no hypothesis may take them any more.
     */
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

    /** Whether a hypothesis has its next sample at this distance from the one before. */
    bool allowsStep(qint64 stepNs) const;

    /**
     * Keeps the hypotheses for which isRight is true of a tracker with that hypothesis alone. Keeps
     * all if it is true for none.
     */
    void keepIf(const std::function<bool(PlaybackTracker alone)>& isRight);

    /**
     * Advances all by a sample.
     * @param arrival the record that was this sample, or should have been; without it the pass does
     * not count it, and the passes before are forgotten
     * @param next the sample after it, if known; hypotheses for unknown commands that do not begin
     * with it are left out
     */
    void advance(const std::optional<Arrival>& arrival = std::nullopt,
                 const SampleContent* next = nullptr);

    /** To be called before a sample that no hypothesis allows is skipped. */
    void splitUnequal() { mBeam.splitUnequal(); }

    /** keep() and advance(). */
    bool take(const SampleContent& content, std::optional<qint64> stepNs,
              const SampleContent* next = nullptr);

    /** Whether all have the same past, so that results about the samples so far are final. */
    bool isSettled() const { return PassHistory::agree(mBeam.all()); }

    /** Removes and returns the ended passes on which all agree, oldest first. */
    std::vector<PlayedPasses> takeEnded();

    /** Removes and returns all passes of the likeliest hypothesis, including the current one. */
    std::vector<PlayedPasses> breakOff(const Arrival& last);

    /** The next sample begins a pass, at whatever position in its file. */
    void forgetPasses();

    /** Adds the hypotheses of the other tracker. */
    void alsoFollow(const PlaybackTracker& other) { mBeam.insertOrMerge(other.mBeam.all()); }

    /** A tracker with these hypotheses instead of its own. */
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
    bool mPastHasChanged = false; ///< since the last takeEnded()
};

} // namespace explain
