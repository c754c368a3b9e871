#pragma once

#include "explain/PlayPlan.h"

namespace explain {

/**
 * Finds contents in the files of a plan, which it borrows. A file of equal periods has a position
 * in each of them; these become one Positions object.
 */
class ContentSearch
{
public:
    explicit ContentSearch(const PlayPlan& plan) : mPlan(plan) {}

    /**
     * All positions from which the file continues with these contents, up to its end; looks at
     * every sample. Requires: at least one content.
     */
    std::vector<Positions> scan(const std::vector<SampleContent>& contents) const;

    /**
     * The same by an index, which the first call makes: 8 bytes per sample. The time depends only
     * on the number of results.
     */
    std::vector<Positions> find(const std::vector<SampleContent>& contents) const;

private:
    /** Samples of a file that are equal to those one stride later. */
    struct RepeatedRun
    {
        size_t mStride = 0;
        size_t mFirst = 0;
        size_t mEnd = 0;
    };

    void makeIndex() const;
    bool repeats(size_t file, size_t first, size_t end, size_t stride) const;
    void addPositions(size_t file, const std::vector<size_t>& samples,
                      std::vector<Positions>* all) const;

    const PlayPlan& mPlan;
    /** For each sample its hash and, in the lower half, its number among all files; sorted. */
    mutable std::vector<quint64> mIndex;
    mutable std::vector<RepeatedRun> mRuns; ///< one per file: the last one found
};

} // namespace explain
