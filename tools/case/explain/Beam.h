#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "explain/Hypothesis.h"

namespace explain {

/**
 * The hypotheses that a search follows. They are bounded: those that cost more than
 * kMaxCostAboveLikeliest above the likeliest are dropped, and at most kMaxHypotheses are kept, the
 * likeliest ones.
 *
 * Value type; borrows the plan.
 */
class Beam
{
public:
    explicit Beam(const PlayPlan& plan) : mPlan(&plan) {}

    const PlayPlan& plan() const { return *mPlan; }
    const std::vector<Hypothesis>& all() const { return mAll; }
    std::vector<Hypothesis>& changeAll() { return mAll; }
    bool empty() const { return mAll.empty(); }

    /** The first hypothesis with the lowest cost. Requires: not empty(). */
    const Hypothesis& likeliest() const;

    /**
     * Adds a hypothesis, unless another one dominates it. Two whose union allows for nothing more
     * are merged.
     */
    void insertOrMerge(Hypothesis added);
    void insertOrMerge(std::vector<Hypothesis> added);

    /** Drops the hypotheses that cost too much, and those beyond the limit. */
    void prune();

    /**
     * Whether a hypothesis has this sample next.
     * @param stepNs time since the sample before; without it any step fits
     */
    bool allows(const SampleContent& content, std::optional<qint64> stepNs) const;

    /** Keeps the hypotheses that allow() the sample. False, without a change, if there is none. */
    bool filter(const SampleContent& content, std::optional<qint64> stepNs);

    /**
     * Splits off the positions of a hypothesis that continue differently from its others. To be
     * called before a sample is skipped without filter().
     */
    void splitUnequal();

    /** Number of times that positions were dropped or split off. */
    size_t changes() const { return mChanges; }

    /**
     * Keeps the hypotheses for which isRight is true of a beam with that hypothesis alone. Keeps
     * all if it is true for none.
     */
    void filterIf(const std::function<bool(const Beam& alone)>& isRight);

private:
    bool fits(const PlayedFile& file, size_t sample, const SampleContent& content,
              std::optional<qint64> stepNs) const;
    bool anyFits(const Hypothesis& it, const SampleContent& content,
                 std::optional<qint64> stepNs) const;

    const PlayPlan* mPlan;
    std::vector<Hypothesis> mAll;
    size_t mChanges = 0;
};

} // namespace explain
