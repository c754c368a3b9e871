#pragma once

#include <optional>

#include "explain/Findings.h"
#include "explain/Hypotheses.h"

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
    void flushOthers(size_t file);

    /** A sample of the current pass arrived; @param sample its place in the file */
    void addSample(size_t sample, qint64 stampNs);

    bool isInPass() const { return mPass.mSamples > 0; }

    /** The current pass ends here. Requires: isInPass(). */
    void endPass(const PlayedCase& played);

    /** Puts out what there is; what follows begins a new stretch. */
    void flush();

private:
    struct Pass
    {
        size_t mSamples = 0;
        size_t mFirstSample = 0;
        size_t mLastSample = 0;
        qint64 mFirstStampNs = 0;
        qint64 mLastStampNs = 0;
    };

    std::vector<int> configurationsOf(const PlayedCase& played) const;

    const PlayPlan& mPlan;
    bool mNamesEqual;
    ExplanationOutput& mOutput;
    Pass mPass;
    std::optional<PlayedStretch> mStretch;
};
