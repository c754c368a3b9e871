#include "explain/Stretches.h"

#include <algorithm>

namespace explain {

void Stretches::flushOthers(const PlayedFile& file)
{
    if (mStretch && mStretch->mFile != file.mName) {
        flush();
    }
}

std::vector<int> Stretches::configurationsOf(const PlayedPass& played) const
{
    std::set<int> all = played.mConfigurations;
    if (mNamesEqual) {
        for (const int configuration : played.mConfigurations) {
            const std::vector<int> equal = mPlan.equalConfigurations(configuration);
            all.insert(equal.begin(), equal.end());
        }
    }
    return {all.begin(), all.end()};
}

void Stretches::add(const PlayedPass& played)
{
    const PlayedFile& file = mPlan.files()[played.mFile];
    const PassStart& start = played.mStart;
    std::vector<int> configurations = configurationsOf(played);
    const bool goesOn =
        mStretch && start.mSample == 0 && mStretch->mLastSample + 1 == mStretch->mFileSamples &&
        mStretch->mFile == file.mName && mStretch->mConfigurations == configurations;
    if (!goesOn) {
        flush();
        mStretch = PlayedStretch{std::move(configurations),
                                 file.mName,
                                 file.mSamples.size(),
                                 0,
                                 start.mSample,
                                 0,
                                 start.mFirst.mStampNs,
                                 0,
                                 0};
    }
    ++mStretch->mPasses;
    mStretch->mLastSample = played.mLastSample;
    mStretch->mLastStampNs = played.mLastStampNs;
    mStretch->mSamples += played.mLastSample + 1 - start.mSample;
}

void Stretches::flush()
{
    if (mStretch) {
        mOutput.add(*mStretch);
    }
    mStretch.reset();
}

} // namespace explain
