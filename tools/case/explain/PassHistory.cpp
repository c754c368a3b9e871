#include "explain/PassHistory.h"

#include <algorithm>

#include "explain/Hypothesis.h"

namespace explain {

bool PlayedPasses::append(const PlayedPasses& next)
{
    const bool continues =
        next.mFile == mFile && next.mFirstSample == 0 && next.mKnownCommands == mKnownCommands &&
        next.mUnknownCommands == mUnknownCommands && next.mConfigurations == mConfigurations;
    if (!continues) {
        return false;
    }
    mLast = next.mLast;
    mLastSample = next.mLastSample;
    mPasses += next.mPasses;
    mSamples += next.mSamples;
    return true;
}

Origins::Origins(Origin origin, size_t count)
{
    origin.mCount = count;
    mAll.append(origin);
}

Origins Origins::fresh(size_t count) const
{
    Origin origin;
    origin.mLastEffect = first().mLastEffect;
    return Origins(origin, count);
}

bool Origins::isSameAs(const Origins& other) const
{
    const Origin& here = first();
    const Origin& there = other.first();
    return mAll.size() == 1 && other.mAll.size() == 1 && here.mCount == there.mCount &&
           here.mBefore == there.mBefore && here.mHasBegun == there.mHasBegun &&
           here.mSamplesBefore == there.mSamplesBefore &&
           here.mLastEffect.mStampNs == there.mLastEffect.mStampNs;
}

void Origins::pushFirst(Origin origin)
{
    if (static_cast<size_t>(mAll.size()) >= kMaxOrigins) {
        ++mAll.first().mCount;
        return;
    }
    origin.mCount = 1;
    mAll.prepend(origin);
}

void Origins::dropLast()
{
    if (--mAll.last().mCount == 0) {
        mAll.removeLast();
    }
}

PlayedPasses PassHistory::passOf(const Hypothesis& hypothesis, size_t samplesTaken,
                                 const Arrival& last) const
{
    const PlayedEntry& entry = mPlan.entry(hypothesis.mEntry);
    const Origin& origin = hypothesis.mOrigins.first();
    const size_t samples = std::min(samplesTaken - origin.mSamplesBefore, hypothesis.mSample);
    return {entry.mFile,
            {entry.mConfiguration},
            hypothesis.mKnownCommands,
            hypothesis.mUnknownCommands,
            origin.mLastEffect,
            origin.mFirst,
            last,
            hypothesis.mSample - samples,
            hypothesis.mSample - 1,
            1,
            samples};
}

void PassHistory::addEnded(std::vector<Hypothesis>* ended, size_t samplesTaken,
                           const Arrival& last) const
{
    std::vector<std::shared_ptr<EndedPasses>> ends;
    for (Hypothesis& it : *ended) {
        PlayedPasses pass = passOf(it, samplesTaken, last);
        Origin& origin = it.mOrigins.changeFirst();
        const auto same = std::find_if(ends.begin(), ends.end(), [&](const auto& end) {
            return end->mCost == it.mCost && end->mBefore == origin.mBefore &&
                   end->mPasses.mFile == pass.mFile &&
                   end->mPasses.mKnownCommands == pass.mKnownCommands &&
                   end->mPasses.mUnknownCommands == pass.mUnknownCommands &&
                   end->mPasses.mFirst.mRecord == pass.mFirst.mRecord &&
                   end->mPasses.mFirstSample == pass.mFirstSample;
        });
        if (same == ends.end()) {
            const size_t before = origin.mBefore ? origin.mBefore->mRows : 0;
            ends.push_back(std::make_shared<EndedPasses>(
                EndedPasses{std::move(pass), it.mCost, before + 1, origin.mBefore}));
            origin.mBefore = ends.back();
            continue;
        }
        (*same)->mPasses.mConfigurations.merge(pass.mConfigurations);
        origin.mBefore = *same;
    }
    for (const std::shared_ptr<EndedPasses>& end : ends) {
        if (!end->mBefore) {
            continue;
        }
        PlayedPasses all = end->mBefore->mPasses;
        if (all.append(end->mPasses)) {
            end->mPasses = std::move(all);
            end->mRows = end->mBefore->mRows;
            end->mBefore = end->mBefore->mBefore;
        }
    }
}

bool PassHistory::agree(const std::vector<Hypothesis>& all)
{
    const EndedPasses* const past = all.front().mOrigins.first().mBefore.get();
    for (const Hypothesis& it : all) {
        for (const Origin& origin : it.mOrigins.all()) {
            if (origin.mBefore.get() != past) {
                return false;
            }
        }
    }
    return true;
}

bool PassHistory::isTooLong(const std::vector<Hypothesis>& all)
{
    return std::any_of(all.begin(), all.end(), [](const Hypothesis& it) {
        const auto& before = it.mOrigins.first().mBefore;
        return before && before->mRows > kMaxAmbiguousRows;
    });
}

std::vector<PlayedPasses> PassHistory::settle(const Hypothesis& decisive,
                                              std::vector<Hypothesis>* all)
{
    const Origin settled = decisive.mOrigins.first();
    std::vector<PlayedPasses> passes;
    for (const EndedPasses* it = settled.mBefore.get(); it != nullptr; it = it->mBefore.get()) {
        passes.push_back(it->mPasses);
    }
    std::reverse(passes.begin(), passes.end());
    for (Hypothesis& it : *all) {
        for (Origin& origin : it.mOrigins.changeAll()) {
            if (origin.mBefore != settled.mBefore) {
                origin.mHasBegun = settled.mHasBegun;
                origin.mFirst = settled.mFirst;
                origin.mSamplesBefore = settled.mSamplesBefore;
            }
            origin.mBefore = nullptr;
        }
    }
    return passes;
}

} // namespace explain
