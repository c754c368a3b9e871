#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "explain/Hypothesis.h"

namespace explain {

/**
 * The hypotheses that a search follows. It is bounded: what costs more than kMaxCostAboveLikeliest
 * above the likeliest is dropped, and of more than kMaxHypotheses the likeliest are kept.
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

    /** The first of those that cost least. Requires: not empty(). */
    const Hypothesis& likeliest() const;

    /** Adds one, unless another dominates it; two that together allow for no more become one. */
    void insertOrMerge(Hypothesis added);
    void insertOrMerge(std::vector<Hypothesis> added);

    /** Drops the hypotheses that cost too much, and those beyond the limit. */
    void prune();

    /**
     * Whether one of them has this sample next.
     * @param stepNs since the sample before; without it any step will do
     */
    bool allows(const SampleContent& content, std::optional<qint64> stepNs) const;

    /** Keeps those that allow() it; false when none does, and nothing is changed then. */
    bool filter(const SampleContent& content, std::optional<qint64> stepNs);

    /**
     * Splits off the positions of a hypothesis that do not continue as its others do. To be called
     * before a sample is passed over without filter().
     */
    void splitUnequal();

    /** How often positions were dropped or split off. */
    size_t changes() const { return mChanges; }

    /** Keeps those for which this is true of a beam of them alone; all if it is true for none. */
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
