#pragma once

#include <optional>

#include "explain/Findings.h"
#include "explain/Hypotheses.h"

namespace explain {

/**
 * Makes stretches of samples: passes of one file in a row, for the same configurations, become one.
 */
class Stretches
{
public:
    /**
     * @param namesEqual whether to name all configurations that play the same, for want of knowing
     *        which of them was meant
     * Borrows the plan and the output.
     */
    Stretches(const PlayPlan& plan, bool namesEqual, ExplanationOutput& output)
        : mPlan(plan), mNamesEqual(namesEqual), mOutput(output)
    {
    }

    /** Puts out a stretch of another file: what is said next comes behind it. */
    void flushOthers(const PlayedFile& file);

    void add(const PlayedPass& played);

    /** Puts out what there is; what follows begins a new stretch. */
    void flush();

private:
    std::vector<int> configurationsOf(const PlayedPass& played) const;

    const PlayPlan& mPlan;
    bool mNamesEqual;
    ExplanationOutput& mOutput;
    std::optional<PlayedStretch> mStretch;
};

} // namespace explain
