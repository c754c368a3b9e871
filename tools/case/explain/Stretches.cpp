#include "explain/Stretches.h"

#include <algorithm>

void Stretches::flushOthers(size_t file)
{
    if (mStretch && mStretch->mFile != mPlan.files()[file].mName) {
        flush();
    }
}

void Stretches::addSample(size_t sample, qint64 stampNs)
{
    if (mPass.mSamples == 0) {
        mPass.mFirstSample = sample;
        mPass.mFirstStampNs = stampNs;
    }
    mPass.mLastSample = sample;
    mPass.mLastStampNs = stampNs;
    ++mPass.mSamples;
}

std::vector<int> Stretches::configurationsOf(const PlayedCase& played) const
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

void Stretches::endPass(const PlayedCase& played)
{
    const PlayedFile& file = mPlan.files()[played.mFile];
    std::vector<int> configurations = configurationsOf(played);
    const bool goesOn = mStretch && mPass.mFirstSample == 0 &&
                        mStretch->mLastSample + 1 == mStretch->mFileSamples &&
                        mStretch->mFile == file.mName &&
                        mStretch->mConfigurations == configurations;
    if (!goesOn) {
        flush();
        mStretch = PlayedStretch{std::move(configurations),
                                 file.mName,
                                 file.mSamples.size(),
                                 0,
                                 mPass.mFirstSample,
                                 0,
                                 mPass.mFirstStampNs,
                                 0,
                                 0};
    }
    ++mStretch->mPasses;
    mStretch->mLastSample = mPass.mLastSample;
    mStretch->mLastStampNs = mPass.mLastStampNs;
    mStretch->mSamples += mPass.mSamples;
    mPass = Pass();
}

void Stretches::flush()
{
    if (mStretch) {
        mOutput.add(*mStretch);
    }
    mStretch.reset();
}
