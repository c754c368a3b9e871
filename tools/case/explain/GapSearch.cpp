#include "explain/GapSearch.h"

#include <algorithm>

namespace explain {

namespace {
/** A possible course of playing during the lost samples. */
struct Path
{
    Hypothesis mAt;
    qint64 mLeftNs; ///< from the sample before mAt to the next one that arrived
    size_t mLost;
};

const PlayedFile& file(const PlaybackTracker& tracker, const Hypothesis& it)
{
    return tracker.beam().plan().fileOf(it.mEntry);
}

/**
 * Whether the gap can lead from this sample to another one of the file, or beyond its end. Mostly
 * it cannot, which saves a search.
 */
bool leads(const PlayedFile& file, size_t sample, qint64 gapNs)
{
    if (!file.hasAllSteps()) {
        return false;
    }
    const qint64 atNs = file.timeBefore(sample) + gapNs;
    return atNs > file.durationNs() || file.sampleAtTime(atNs).has_value();
}

Hypothesis singleAt(const Hypothesis& it, size_t sample)
{
    Hypothesis single = it;
    single.mSample = sample;
    single.mStride = 0;
    single.mCount = 1;
    single.mOrigins = it.mOrigins.fresh(1);
    return single;
}

std::vector<Path> beginPaths(const PlaybackTracker& expected, qint64 gapNs)
{
    std::vector<Path> paths;
    for (const Hypothesis& it : expected.beam().all()) {
        for (size_t i = 0; i < it.mCount && paths.size() < kMaxGapStarts; ++i) {
            const size_t sample = it.mSample + i * it.mStride;
            if (leads(file(expected, it), sample, gapNs)) {
                paths.push_back({singleAt(it, sample), gapNs, 0});
            }
        }
    }
    return paths;
}

/** Continues the path with all successors of its pass. */
void follow(const Path& path, qint64 passNs, const PlayPlan& plan, std::vector<Path>* open)
{
    const size_t lost = path.mLost + plan.fileOf(path.mAt.mEntry).size() - path.mAt.mSample;
    for (Hypothesis& next : successors(path.mAt, plan)) {
        open->push_back({std::move(next), path.mLeftNs - passNs, lost});
    }
}
} // namespace

GapAnswer searchAfterGap(const PlaybackTracker& expected, qint64 gapNs)
{
    const PlayPlan& plan = expected.beam().plan();
    std::vector<Path> open;
    if (gapNs > 0 && gapNs <= kMaxGapNs) {
        open = beginPaths(expected, gapNs);
    }
    std::vector<Hypothesis> found;
    std::optional<size_t> lost;
    for (size_t plays = 0; !open.empty() && plays < kMaxPlaysInGap; ++plays) {
        Path path = std::move(open.back());
        open.pop_back();
        const PlayedFile& file = plan.fileOf(path.mAt.mEntry);
        if (!file.hasAllSteps()) {
            continue;
        }
        const qint64 beforeNs = file.timeBefore(path.mAt.mSample);
        const qint64 passNs = file.durationNs() - beforeNs;
        if (path.mLeftNs > passNs) {
            follow(path, passNs, plan, &open);
        } else if (const auto sample = file.sampleAtTime(beforeNs + path.mLeftNs)) {
            const size_t lostHere = path.mLost + *sample - path.mAt.mSample;
            lost = std::min(lost.value_or(lostHere), lostHere);
            path.mAt.mSample = *sample;
            found.push_back(std::move(path.mAt));
        }
    }
    return {expected.replacedBy(std::move(found)), lost.value_or(0)};
}

} // namespace explain
