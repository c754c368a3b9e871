#include "explain/PlaybackTracker.h"

#include <algorithm>
#include <map>

namespace explain {

PlaybackTracker PlaybackTracker::atStart(const PlayPlan& plan)
{
    PlaybackTracker result(plan);
    Hypothesis before;
    before.mContinuous = ConfigurationSet({plan.continuousConfiguration()});
    const int first = plan.firstEntry(plan.continuousConfiguration());
    result.mBeam.insertOrMerge(first == PlayPlan::kNone
                                   ? startsAt(plan.firstEntries(), before, plan)
                                   : startsAt({first}, before, plan));
    return result;
}

void PlaybackTracker::addCutFronts(const std::vector<Positions>& all, bool isAnyContinuous)
{
    std::vector<int> numbers;
    for (const int entry : plan().firstEntries()) {
        numbers.push_back(plan().entry(entry).mConfiguration);
    }
    const ConfigurationSet anyContinuous(std::move(numbers));
    std::vector<Hypothesis> moved = movedTo(all).mBeam.all();
    for (Hypothesis& it : moved) {
        it.mCost += kCostOfCutFront;
        if (isAnyContinuous) {
            it.mContinuous = anyContinuous;
        }
    }
    mBeam.insertOrMerge(std::move(moved));
}

PlaybackTracker PlaybackTracker::movedTo(const std::vector<Positions>& all) const
{
    PlaybackTracker result(plan());
    result.mSamplesTaken = mSamplesTaken;
    if (all.empty()) {
        return result;
    }
    Hypothesis moved = likeliest();
    const ConfigurationSet continuousBefore = moved.mContinuous;
    const auto add = [&](size_t sample, size_t stride, size_t count) {
        moved.mSample = sample;
        moved.mStride = count > 1 ? stride : 0;
        moved.mCount = count;
        moved.mOrigins = moved.mOrigins.fresh(count);
        result.mBeam.insertOrMerge(moved);
    };
    for (const Positions& it : all) {
        for (const int entry : plan().entriesOf(it.mFile)) {
            moved.mEntry = entry;
            moved.mMinRepetition = 1;
            moved.mMaxRepetition = plan().entry(entry).mRepetitions;
            moved.mContinuous = continuousBefore.with(plan().entry(entry).mConfiguration);
            const bool beginsCase = it.mFirst == 0 && it.mCount > 1;
            if (beginsCase) {
                add(0, 0, 1);
                add(it.mStride, it.mStride, it.mCount - 1);
            } else {
                add(it.mFirst, it.mStride, it.mCount);
            }
        }
    }
    return result;
}

PlaybackTracker PlaybackTracker::restarted(const SampleContent& content) const
{
    std::map<size_t, const Hypothesis*> likeliestOf; // by the commands taken
    for (const Hypothesis& it : mBeam.all()) {
        const Hypothesis*& best = likeliestOf.try_emplace(it.mKnownCommands, &it).first->second;
        best = it.mCost < best->mCost ? &it : best;
    }
    PlaybackTracker result = replacedBy({});
    for (const auto& [commands, it] : likeliestOf) {
        Hypothesis before = *it;
        before.mOrigins = before.mOrigins.fresh(1);
        result.mBeam.insertOrMerge(startsAt(plan().firstEntriesWith(content), before, plan()));
    }
    return result;
}

bool PlaybackTracker::isBetweenCases() const
{
    return std::any_of(mBeam.all().begin(), mBeam.all().end(),
                       [](const auto& it) { return it.mSample == 0; });
}

void PlaybackTracker::offer(const std::vector<ControlCommand>& commands,
                            const CommandEffect& effect, int costOfWaiting)
{
    std::vector<Hypothesis> before;
    before.swap(mBeam.changeAll());
    for (Hypothesis& it : before) {
        if (it.mSample == 0 && it.mKnownCommands < commands.size()) {
            Hypothesis taken = it;
            taken.mOrigins.changeFirst().mLastEffect = effect;
            ++taken.mKnownCommands;
            mBeam.insertOrMerge(successorsOf(commands[it.mKnownCommands], taken, plan()));
            it.mCost += costOfWaiting;
        }
        mBeam.insertOrMerge(std::move(it));
    }
}

void PlaybackTracker::excludeCommands(size_t count)
{
    for (Hypothesis& it : mBeam.changeAll()) {
        it.mKnownCommands = std::max(it.mKnownCommands, count);
    }
}

bool PlaybackTracker::keep(const SampleContent& content, std::optional<qint64> stepNs)
{
    const size_t changesBefore = mBeam.changes();
    const bool any = mBeam.filter(content, stepNs);
    mPastHasChanged = mPastHasChanged || changesBefore != mBeam.changes();
    return any;
}

bool PlaybackTracker::allowsStep(qint64 stepNs) const
{
    return std::any_of(mBeam.all().begin(), mBeam.all().end(), [&](const Hypothesis& it) {
        const quint32 step = plan().fileOf(it.mEntry).stepAt(it.mSample);
        return step == 0 || stepNs == step;
    });
}

void PlaybackTracker::keepIf(const std::function<bool(PlaybackTracker alone)>& isRight)
{
    mBeam.filterIf([&](const Beam& beam) {
        PlaybackTracker alone = *this;
        alone.mBeam = beam;
        return isRight(std::move(alone));
    });
}

bool PlaybackTracker::take(const SampleContent& content, std::optional<qint64> stepNs,
                           const SampleContent* next)
{
    if (!keep(content, stepNs)) {
        return false;
    }
    advance(std::nullopt, next);
    return true;
}

void PlaybackTracker::beginPasses(const Arrival& arrival)
{
    for (Hypothesis& it : mBeam.changeAll()) {
        if (!it.mOrigins.first().mHasBegun) {
            Origin& origin = it.mOrigins.changeFirst();
            origin.mHasBegun = true;
            origin.mFirst = arrival;
            origin.mSamplesBefore = mSamplesTaken;
        }
    }
}

void PlaybackTracker::advance(const std::optional<Arrival>& arrival, const SampleContent* next)
{
    if (arrival) {
        beginPasses(*arrival);
    }
    ++mSamplesTaken;
    bool anyEnded = false;
    bool anyBegan = false;
    for (Hypothesis& it : mBeam.changeAll()) {
        ++it.mSample;
        anyBegan = anyBegan || it.mSample == 1;
        anyEnded = anyEnded || it.lastSample() == plan().fileOf(it.mEntry).size();
    }
    if (anyBegan && mBeam.all().size() > 1) {
        mergeAtSecondSample();
    }
    if (!anyEnded) {
        return;
    }
    mPastHasChanged = true;
    std::vector<Hypothesis> ended = removeEnded();
    if (arrival) {
        PassHistory(plan()).addEnded(&ended, mSamplesTaken, *arrival);
    }
    for (Hypothesis& it : ended) {
        Origin& origin = it.mOrigins.changeFirst();
        origin.mHasBegun = false;
        mBeam.insertOrMerge(successors(it, plan()));
    }
    addUnknownCommands(next);
    mBeam.prune();
}

/** Removes and returns the positions at the end of their file. */
std::vector<Hypothesis> PlaybackTracker::removeEnded()
{
    std::vector<Hypothesis> ended;
    std::vector<Hypothesis>& all = mBeam.changeAll();
    for (Hypothesis& it : all) {
        if (it.lastSample() != plan().fileOf(it.mEntry).size()) {
            continue;
        }
        if (it.mCount > 1) {
            ended.push_back(it.splitLast());
        } else {
            ended.push_back(it);
            it.mCount = 0; // to be erased
        }
    }
    all.erase(std::remove_if(all.begin(), all.end(), [](const auto& it) { return it.mCount == 0; }),
              all.end());
    return ended;
}

/**
 * Merges a case that has just begun into a hypothesis of which it continues the row of positions.
 * So a steady file of a thousand periods, of which any may be the last, is followed as one
 * hypothesis.
 */
void PlaybackTracker::mergeAtSecondSample()
{
    std::vector<Hypothesis>& all = mBeam.changeAll();
    for (Hypothesis& begun : all) {
        if (begun.mSample != 1 || begun.mCount != 1) {
            continue;
        }
        const PlayedFile& file = plan().fileOf(begun.mEntry);
        const bool isTaken = std::any_of(all.begin(), all.end(), [&](Hypothesis& it) {
            return it.mCount > 0 && it.prepend(begun, file);
        });
        if (isTaken) {
            begun.mCount = 0; // to be erased
        }
    }
    all.erase(std::remove_if(all.begin(), all.end(), [](const auto& it) { return it.mCount == 0; }),
              all.end());
}

/** An unknown command may have been given wherever a case has just ended. */
void PlaybackTracker::addUnknownCommands(const SampleContent* next)
{
    const Hypothesis* cheapest = nullptr;
    for (const Hypothesis& it : mBeam.all()) {
        if (it.mSample == 0 && (cheapest == nullptr || it.mCost < cheapest->mCost)) {
            cheapest = &it;
        }
    }
    if (cheapest == nullptr ||
        cheapest->mCost + kCostOfUnknownCommand > likeliest().mCost + kMaxCostAboveLikeliest) {
        return; // no case has just ended, or the result would be pruned at once
    }
    Hypothesis commanded = *cheapest;
    commanded.mCost += kCostOfUnknownCommand;
    ++commanded.mUnknownCommands;
    const bool isKnown = next != nullptr && !plan().firstEntriesWith(*next).empty();
    std::vector<int> entries = isKnown ? plan().firstEntriesWith(*next) : plan().firstEntries();
    const auto isRestartedOften = [&](int entry) {
        const auto count =
            std::count_if(mBeam.all().begin(), mBeam.all().end(), [&](const Hypothesis& it) {
                return it.mEntry == entry && it.mSample == 0 && it.mCost == commanded.mCost &&
                       it.mKnownCommands == commanded.mKnownCommands;
            });
        return count >= kMaxRestarts;
    };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isRestartedOften), entries.end());
    mBeam.insertOrMerge(startsAt(entries, commanded, plan()));
}

PlayedPasses PlaybackTracker::current(const Arrival& last) const
{
    const Hypothesis& first = likeliest();
    PlayedPasses played = PassHistory(plan()).passOf(first, mSamplesTaken, last);
    for (const Hypothesis& it : mBeam.all()) {
        const PlayedEntry& entry = plan().entry(it.mEntry);
        if (it.mCost == first.mCost && entry.mFile == played.mFile && it.contains(first.mSample)) {
            played.mConfigurations.insert(entry.mConfiguration);
        }
    }
    return played;
}

std::vector<PlayedPasses> PlaybackTracker::takeEnded()
{
    if (!mPastHasChanged) {
        return {};
    }
    mPastHasChanged = false;
    if (!PassHistory::agree(mBeam.all()) && !PassHistory::isTooLong(mBeam.all())) {
        return {};
    }
    const Hypothesis decisive = likeliest();
    return PassHistory::settle(decisive, &mBeam.changeAll());
}

std::vector<PlayedPasses> PlaybackTracker::breakOff(const Arrival& last)
{
    const Hypothesis decisive = likeliest();
    std::vector<PlayedPasses> passes = PassHistory::settle(decisive, &mBeam.changeAll());
    if (likeliest().mOrigins.first().mHasBegun) {
        passes.push_back(current(last));
    }
    forgetPasses();
    return passes;
}

void PlaybackTracker::forgetPasses()
{
    for (Hypothesis& it : mBeam.changeAll()) {
        it.mOrigins = it.mOrigins.fresh(it.mCount);
    }
}

PlaybackTracker PlaybackTracker::replacedBy(std::vector<Hypothesis> hypotheses) const
{
    PlaybackTracker result(plan());
    result.mSamplesTaken = mSamplesTaken;
    result.mBeam.insertOrMerge(std::move(hypotheses));
    return result;
}

} // namespace explain
