#include "explain/PassMerger.h"

namespace explain {

void PassMerger::flushOthers(const PlayedFile& file)
{
    if (mSegment && mSegment->mFile != file.name()) {
        flush();
    }
}

std::vector<int> PassMerger::configurationsOf(const PlayedPasses& played) const
{
    std::set<int> all = played.mConfigurations;
    if (mNamesEqual) {
        for (const int configuration : played.mConfigurations) {
            const std::vector<int>& equal = mPlan.equalConfigurations(configuration);
            all.insert(equal.begin(), equal.end());
        }
    }
    return {all.begin(), all.end()};
}

void PassMerger::add(const PlayedPasses& played)
{
    const PlayedFile& file = mPlan.files()[played.mFile];
    std::vector<int> configurations = configurationsOf(played);
    const bool continues = mSegment && played.mFirstSample == 0 &&
                           mSegment->mLastSample + 1 == mSegment->mFileSamples &&
                           mSegment->mFile == file.name() &&
                           mSegment->mConfigurations == configurations;
    if (!continues) {
        flush();
        mSegment = PlayedSegment{std::move(configurations),
                                 file.name(),
                                 file.size(),
                                 0,
                                 played.mFirstSample,
                                 0,
                                 played.mFirst.mStampNs,
                                 0,
                                 0};
    }
    mSegment->mPasses += played.mPasses;
    mSegment->mLastSample = played.mLastSample;
    mSegment->mLastStampNs = played.mLast.mStampNs;
    mSegment->mSamples += played.mSamples;
}

void PassMerger::flush()
{
    if (mSegment) {
        mOutput.add(*mSegment);
    }
    mSegment.reset();
}

} // namespace explain
