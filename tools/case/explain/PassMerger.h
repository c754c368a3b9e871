#pragma once

#include <optional>

#include "explain/Findings.h"
#include "explain/PassHistory.h"
#include "explain/PlayPlan.h"

namespace explain {

/** Merges passes of one file in a row, for the same configurations, into one segment. */
class PassMerger
{
public:
    /**
     * @param namesEqual whether to name all configurations that play the same, because it is not
     * known which one was selected
     * Borrows the plan and the output.
     */
    PassMerger(const PlayPlan& plan, bool namesEqual, ExplanationOutput& output)
        : mPlan(plan), mNamesEqual(namesEqual), mOutput(output)
    {
    }

    /** Outputs a segment of another file, so that it precedes the next output. */
    void flushOthers(const PlayedFile& file);

    void add(const PlayedPasses& played);

    /** The merged segment that is not output yet. */
    const std::optional<PlayedSegment>& segment() const { return mSegment; }

    /** Outputs the current segment; the next pass begins a new one. */
    void flush();

private:
    std::vector<int> configurationsOf(const PlayedPasses& played) const;

    const PlayPlan& mPlan;
    bool mNamesEqual;
    ExplanationOutput& mOutput;
    std::optional<PlayedSegment> mSegment;
};

} // namespace explain
