#include "explain/Hypothesis.h"

#include <algorithm>

namespace explain {

namespace {
Hypothesis start(const Hypothesis& before, int entry, ConfigurationSet continuous)
{
    Hypothesis result = before;
    result.mEntry = entry;
    result.mSample = 0;
    result.mStride = 0;
    result.mCount = 1;
    result.mMinRepetition = 1;
    result.mMaxRepetition = 1;
    result.mContinuous = std::move(continuous);
    return result;
}

void addContinuous(const Hypothesis& ended, const PlayPlan& plan, std::vector<Hypothesis>* all)
{
    const size_t before = all->size();
    for (const int configuration : ended.mContinuous.numbers()) {
        const int first = plan.firstEntry(configuration);
        if (first != PlayPlan::kNone) {
            all->push_back(start(ended, first, ConfigurationSet({configuration})));
        }
    }
    if (all->size() == before) {
        const std::vector<Hypothesis> starts = startsAt(plan.firstEntries(), ended, plan);
        all->insert(all->end(), starts.begin(), starts.end());
    }
}
} // namespace

ConfigurationSet ConfigurationSet::with(int number) const
{
    return united(ConfigurationSet({number}));
}

ConfigurationSet ConfigurationSet::united(const ConfigurationSet& other) const
{
    std::vector<int> all;
    std::set_union(numbers().begin(), numbers().end(), other.numbers().begin(),
                   other.numbers().end(), std::back_inserter(all));
    return ConfigurationSet(std::move(all));
}

bool ConfigurationSet::includes(const ConfigurationSet& other) const
{
    return mNumbers == other.mNumbers ||
           std::includes(numbers().begin(), numbers().end(), other.numbers().begin(),
                         other.numbers().end());
}

bool Hypothesis::contains(size_t sample) const
{
    if (mCount == 1) {
        return sample == mSample;
    }
    return sample >= mSample && sample <= lastSample() && (sample - mSample) % mStride == 0;
}

bool Hypothesis::dominates(const Hypothesis& other) const
{
    const bool hasSamples =
        contains(other.mSample) && (other.mCount == 1 || (contains(other.lastSample()) &&
                                                          contains(other.mSample + other.mStride)));
    return hasSamples && mCost <= other.mCost && mUnknownCommands <= other.mUnknownCommands &&
           mMinRepetition <= other.mMinRepetition && mMaxRepetition >= other.mMaxRepetition &&
           mContinuous.includes(other.mContinuous);
}

bool Hypothesis::absorb(const Hypothesis& other)
{
    const bool isAlike = mSample == other.mSample && mStride == other.mStride &&
                         mCount == other.mCount && mCost == other.mCost &&
                         mUnknownCommands == other.mUnknownCommands &&
                         mOrigins.isSameAs(other.mOrigins);
    if (!isAlike) {
        return false;
    }
    if (mMinRepetition == other.mMinRepetition && mMaxRepetition == other.mMaxRepetition) {
        mContinuous = mContinuous.united(other.mContinuous);
        return true;
    }
    const bool areNeighbours = mMinRepetition <= quint64{other.mMaxRepetition} + 1 &&
                               other.mMinRepetition <= quint64{mMaxRepetition} + 1;
    if (!areNeighbours || !(mContinuous == other.mContinuous)) {
        return false;
    }
    mMinRepetition = std::min(mMinRepetition, other.mMinRepetition);
    mMaxRepetition = std::max(mMaxRepetition, other.mMaxRepetition);
    return true;
}

bool Hypothesis::prepend(const Hypothesis& other, const PlayedFile& file)
{
    const bool isAlike =
        mEntry == other.mEntry && mCost == other.mCost && mKnownCommands == other.mKnownCommands &&
        mUnknownCommands == other.mUnknownCommands && mMinRepetition == other.mMinRepetition &&
        mMaxRepetition == other.mMaxRepetition && other.mCount == 1 && other.mSample < mSample &&
        mContinuous == other.mContinuous;
    if (!isAlike) {
        return false;
    }
    const size_t stride = mSample - other.mSample;
    if (mCount > 1 && (stride != mStride || !file.repeats(other.mSample, mSample, stride))) {
        return false;
    }
    mSample = other.mSample;
    mStride = stride;
    ++mCount;
    mOrigins.pushFirst(other.mOrigins.first());
    return true;
}

Hypothesis Hypothesis::splitLast()
{
    Hypothesis last = *this;
    last.mSample = lastSample();
    last.mStride = 0;
    last.mCount = 1;
    last.mOrigins = Origins(mOrigins.last());
    mOrigins.dropLast();
    if (--mCount == 1) {
        mStride = 0;
    }
    return last;
}

std::vector<Hypothesis> successors(const Hypothesis& ended, const PlayPlan& plan)
{
    const PlayedEntry& entry = plan.entry(ended.mEntry);
    std::vector<Hypothesis> all;
    if (ended.mMinRepetition < entry.mRepetitions) {
        Hypothesis again = start(ended, ended.mEntry, ended.mContinuous);
        again.mMinRepetition = ended.mMinRepetition + 1;
        again.mMaxRepetition = std::min(ended.mMaxRepetition, entry.mRepetitions - 1) + 1;
        all.push_back(std::move(again));
    }
    if (ended.mMaxRepetition < entry.mRepetitions) {
        return all;
    }
    if (entry.mNext != PlayPlan::kNone) {
        all.push_back(start(ended, entry.mNext, ended.mContinuous));
    } else {
        addContinuous(ended, plan, &all);
    }
    return all;
}

std::vector<Hypothesis> successorsOf(const ControlCommand& command, const Hypothesis& ended,
                                     const PlayPlan& plan)
{
    Hypothesis commanded = ended;
    if (!command.isOnce()) {
        commanded.mContinuous = ConfigurationSet({command.number()});
    }
    const int first = plan.firstEntry(command.number());
    if (first != PlayPlan::kNone) {
        return {start(commanded, first, commanded.mContinuous)};
    }
    std::vector<Hypothesis> all;
    addContinuous(commanded, plan, &all);
    return all;
}

std::vector<Hypothesis> startsAt(const std::vector<int>& entries, const Hypothesis& before,
                                 const PlayPlan& plan)
{
    std::vector<Hypothesis> all;
    all.reserve(entries.size());
    for (const int entry : entries) {
        all.push_back(
            start(before, entry, before.mContinuous.with(plan.entry(entry).mConfiguration)));
    }
    return all;
}

} // namespace explain
