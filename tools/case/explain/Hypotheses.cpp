#include "explain/Hypotheses.h"

#include <algorithm>

namespace explain {

namespace {
constexpr int kWaitingCommand = 1;
constexpr int kUnknownCommand = 2;

/** That a recording begins elsewhere than the simulator does: more than one command. */
constexpr int kBeginsWithin = 3;

/** What costs so much more than the likeliest is not followed: three commands in its place. */
constexpr int kMaxAbove = 3 * kUnknownCommand;

/** More are not followed; of those, the likeliest are kept. */
constexpr size_t kMaxHypotheses = 256;

/** How far a search for lost samples goes; behind that, what arrives must tell. */
constexpr qint64 kLongestGapNs = 600'000'000'000;
constexpr size_t kMaxBlocks = 100'000;

/** So many passes may have ended while it is open which they were. */
constexpr size_t kMaxWaiting = 256;
} // namespace

void Hypothesis::beginAs(const Hypothesis& other)
{
    mStart = other.mStart;
    if (mStart) {
        const size_t arrived = other.mSample - mStart->mSample;
        mStart->mSample = mSample - std::min(mSample, arrived);
    }
}

bool Hypothesis::covers(const Hypothesis& other) const
{
    return mCost <= other.mCost && mUnknownCommands <= other.mUnknownCommands &&
           mMinRepetition <= other.mMinRepetition && mMaxRepetition >= other.mMaxRepetition &&
           std::includes(mContinuous.begin(), mContinuous.end(), other.mContinuous.begin(),
                         other.mContinuous.end());
}

Hypotheses Hypotheses::atStart(const PlayPlan& plan)
{
    Hypotheses result(plan);
    Hypothesis beforeStart{};
    beforeStart.mContinuous = {plan.continuousConfiguration()};
    const int first = plan.firstEntry(plan.continuousConfiguration());
    if (first == PlayPlan::kNone) {
        result.addStarts(beforeStart);
    } else {
        result.addStart(beforeStart, first, beforeStart.mContinuous);
    }
    return result;
}

void Hypotheses::addPlaces(const std::vector<Place>& places)
{
    for (Hypothesis& it : movedTo(places).mAll) {
        it.mCost += kBeginsWithin;
        add(std::move(it));
    }
}

Hypotheses Hypotheses::movedTo(const std::vector<Place>& places) const
{
    Hypotheses result(*mPlan);
    const std::set<int> continuousBefore = likeliest().mContinuous;
    Hypothesis moved = likeliest();
    for (const Place& place : places) {
        for (moved.mEntry = 0; moved.mEntry < mPlan->entryCount(); ++moved.mEntry) {
            const PlayedEntry& entry = mPlan->entry(moved.mEntry);
            if (entry.mFile == place.mFile) {
                moved.mSample = place.mSample;
                moved.mMinRepetition = 1;
                moved.mMaxRepetition = entry.mRepetitions;
                moved.mContinuous = continuousBefore;
                moved.mContinuous.insert(entry.mConfiguration);
                result.add(moved);
            }
        }
    }
    return result;
}

Hypotheses Hypotheses::restarted() const
{
    Hypotheses result(*mPlan);
    result.addStarts(likeliest());
    return result;
}

bool Hypotheses::isBetweenCases() const
{
    return std::any_of(mAll.begin(), mAll.end(), [](const auto& it) { return it.mSample == 0; });
}

void Hypotheses::offer(const std::vector<ControlCommand>& commands, const CommandEffect& effect)
{
    std::vector<Hypothesis> before;
    before.swap(mAll);
    for (Hypothesis& it : before) {
        if (it.mSample == 0 && it.mKnownCommands < commands.size()) {
            Hypothesis taken = it;
            taken.mLastEffect = effect;
            ++taken.mKnownCommands;
            addCommanded(taken, commands[it.mKnownCommands]);
            it.mCost += kWaitingCommand;
        }
        add(std::move(it));
    }
}

void Hypotheses::addCommanded(Hypothesis it, const ControlCommand& command)
{
    if (!command.isOnce()) {
        it.mContinuous = {command.number()};
    }
    const int first = mPlan->firstEntry(command.number());
    if (first != PlayPlan::kNone) {
        addStart(it, first, it.mContinuous);
        return;
    }
    addContinuous(it);
}

void Hypotheses::giveUpCommand()
{
    const size_t given = likeliest().mKnownCommands;
    for (Hypothesis& it : mAll) {
        it.mKnownCommands = std::max(it.mKnownCommands, given + 1);
    }
}

bool Hypotheses::fits(const Hypothesis& it, const SampleContent& content,
                      std::optional<qint64> stepNs) const
{
    const PlayedFile& file = mPlan->fileOf(it.mEntry);
    const quint32 step = file.stepAt(it.mSample);
    return file.mSamples[it.mSample] == content && (!stepNs || step == 0 || *stepNs == step);
}

bool Hypotheses::allow(const SampleContent& content, std::optional<qint64> stepNs) const
{
    return std::any_of(mAll.begin(), mAll.end(),
                       [&](const Hypothesis& it) { return fits(it, content, stepNs); });
}

bool Hypotheses::keep(const SampleContent& content, std::optional<qint64> stepNs)
{
    if (!allow(content, stepNs)) {
        return false;
    }
    if (mAll.size() > 1) {
        const auto doesNotFit = [&](const Hypothesis& it) { return !fits(it, content, stepNs); };
        mAll.erase(std::remove_if(mAll.begin(), mAll.end(), doesNotFit), mAll.end());
        keepLikeliest();
    }
    return true;
}

bool Hypotheses::allowStep(qint64 stepNs) const
{
    return std::any_of(mAll.begin(), mAll.end(), [&](const Hypothesis& it) {
        const quint32 step = mPlan->fileOf(it.mEntry).stepAt(it.mSample);
        return step == 0 || stepNs == step;
    });
}

void Hypotheses::keepIf(const std::function<bool(const Hypotheses&)>& isRight)
{
    std::vector<Hypothesis> kept;
    Hypotheses alone(*mPlan);
    for (const Hypothesis& it : mAll) {
        alone.mAll = {it};
        if (isRight(alone)) {
            kept.push_back(it);
        }
    }
    if (!kept.empty()) {
        mAll = std::move(kept);
    }
}

bool Hypotheses::take(const SampleContent& content, std::optional<qint64> stepNs)
{
    if (!keep(content, stepNs)) {
        return false;
    }
    advance();
    return true;
}

bool Hypotheses::hasEnded(const Hypothesis& it) const
{
    return it.mSample == mPlan->fileOf(it.mEntry).mSamples.size();
}

void Hypotheses::advance(const std::optional<Arrival>& arrival)
{
    bool anyEnded = false;
    for (Hypothesis& it : mAll) {
        if (arrival && !it.mStart) {
            it.mStart = {*arrival, it.mSample};
        }
        ++it.mSample;
        anyEnded = anyEnded || hasEnded(it);
    }
    if (!anyEnded) {
        return;
    }
    if (arrival) {
        noteEnds(arrival->mStampNs);
    }
    replaceEnded();
    addUnknownCommands();
    keepLikeliest();
}

PlayedPass Hypotheses::passOf(const Hypothesis& it, qint64 lastStampNs) const
{
    const PlayedEntry& entry = mPlan->entry(it.mEntry);
    return {
        entry.mFile, {entry.mConfiguration}, it.mKnownCommands, it.mUnknownCommands, it.mLastEffect,
        *it.mStart,  it.mSample - 1,         lastStampNs};
}

PlayedPass Hypotheses::current(qint64 lastStampNs) const
{
    PlayedPass played = passOf(likeliest(), lastStampNs);
    for (const Hypothesis& it : mAll) {
        const PlayedEntry& entry = mPlan->entry(it.mEntry);
        if (it.mCost == leastCost() && entry.mFile == played.mFile) {
            played.mConfigurations.insert(entry.mConfiguration);
        }
    }
    return played;
}

/** Remembers the passes that have ended: one for all that began it together, as the likeliest. */
void Hypotheses::noteEnds(qint64 stampNs)
{
    std::vector<std::shared_ptr<EndedPass>> ends;
    for (Hypothesis& it : mAll) {
        if (!hasEnded(it)) {
            continue;
        }
        PlayedPass pass = passOf(it, stampNs);
        const auto same = std::find_if(ends.begin(), ends.end(), [&](const auto& end) {
            return end->mBefore == it.mEnded && end->mPass.mFile == pass.mFile &&
                   end->mPass.mStart.mFirst.mRecord == pass.mStart.mFirst.mRecord;
        });
        if (same == ends.end()) {
            const size_t before = it.mEnded ? it.mEnded->mCount : 0;
            ends.push_back(std::make_shared<EndedPass>(
                EndedPass{std::move(pass), it.mCost, before + 1, it.mEnded}));
            it.mEnded = ends.back();
            continue;
        }
        EndedPass& end = **same;
        if (it.mCost < end.mCost) {
            end.mCost = it.mCost;
            end.mPass = std::move(pass);
        } else if (it.mCost == end.mCost) {
            end.mPass.mConfigurations.merge(pass.mConfigurations);
        }
        it.mEnded = *same;
    }
}

std::vector<PlayedPass> Hypotheses::takeEnded(bool anyway)
{
    const Hypothesis& first = likeliest();
    bool allAgree = true;
    bool tooMany = false;
    for (const Hypothesis& it : mAll) {
        allAgree = allAgree && it.mEnded == first.mEnded;
        tooMany = tooMany || (it.mEnded && it.mEnded->mCount > kMaxWaiting);
    }
    if (!tooMany && (!first.mEnded || !(allAgree || anyway))) {
        return {};
    }
    const Hypothesis decisive = first;
    std::vector<PlayedPass> passes;
    for (const EndedPass* it = decisive.mEnded.get(); it != nullptr; it = it->mBefore.get()) {
        passes.push_back(it->mPass);
    }
    std::reverse(passes.begin(), passes.end());
    for (Hypothesis& it : mAll) {
        if (it.mEnded != decisive.mEnded) {
            it.beginAs(decisive);
        }
        it.mEnded = nullptr;
    }
    return passes;
}

std::vector<PlayedPass> Hypotheses::breakOff(qint64 lastStampNs)
{
    std::vector<PlayedPass> passes = takeEnded(true);
    if (likeliest().mStart) {
        passes.push_back(current(lastStampNs));
    }
    forgetPasses();
    return passes;
}

void Hypotheses::forgetPasses()
{
    for (Hypothesis& it : mAll) {
        it.mStart.reset();
        it.mEnded = nullptr;
    }
}

/** Puts what may follow in the place of those that have come to the end of their file. */
void Hypotheses::replaceEnded()
{
    const auto firstEnded = std::stable_partition(mAll.begin(), mAll.end(),
                                                  [this](const auto& it) { return !hasEnded(it); });
    const std::vector<Hypothesis> ended(std::make_move_iterator(firstEnded),
                                        std::make_move_iterator(mAll.end()));
    mAll.erase(firstEnded, mAll.end());
    for (const Hypothesis& it : ended) {
        addFollowing(it);
    }
}

/** A command of which nothing is known may come wherever a case has just ended. */
void Hypotheses::addUnknownCommands()
{
    const Hypothesis* cheapest = nullptr;
    for (const Hypothesis& it : mAll) {
        if (it.mSample == 0 && (cheapest == nullptr || it.mCost < cheapest->mCost)) {
            cheapest = &it;
        }
    }
    if (cheapest->mCost + kUnknownCommand > leastCost() + kMaxAbove) {
        return; // what follows would be dropped at once
    }
    Hypothesis commanded = *cheapest;
    commanded.mCost += kUnknownCommand;
    ++commanded.mUnknownCommands;
    addStarts(commanded);
}

/** At the beginning of any configuration, which may have become the continuous one. */
void Hypotheses::addStarts(const Hypothesis& before)
{
    const std::set<int> continuousBefore = before.mContinuous;
    for (const int entry : mPlan->firstEntries()) {
        std::set<int> continuous = continuousBefore;
        continuous.insert(mPlan->entry(entry).mConfiguration);
        addStart(before, entry, continuous);
    }
}

void Hypotheses::addFollowing(const Hypothesis& ended)
{
    const PlayedEntry& entry = mPlan->entry(ended.mEntry);
    if (ended.mMinRepetition < entry.mRepetitions) {
        Hypothesis again = ended;
        again.mSample = 0;
        again.mStart.reset();
        ++again.mMinRepetition;
        again.mMaxRepetition = std::min(ended.mMaxRepetition, entry.mRepetitions - 1) + 1;
        add(std::move(again));
    }
    if (ended.mMaxRepetition < entry.mRepetitions) {
        return;
    }
    if (entry.mNext != PlayPlan::kNone) {
        addStart(ended, entry.mNext, ended.mContinuous);
        return;
    }
    addContinuous(ended);
}

void Hypotheses::addContinuous(const Hypothesis& ended)
{
    bool goesOn = false;
    for (const int configuration : ended.mContinuous) {
        const int first = mPlan->firstEntry(configuration);
        if (first != PlayPlan::kNone) {
            addStart(ended, first, {configuration});
            goesOn = true;
        }
    }
    if (!goesOn) {
        addStarts(ended); // nothing to play: whatever the next command says
    }
}

void Hypotheses::addStart(Hypothesis it, int entry, std::set<int> continuous)
{
    it.mEntry = entry;
    it.mSample = 0;
    it.mStart.reset();
    it.mMinRepetition = 1;
    it.mMaxRepetition = 1;
    it.mContinuous = std::move(continuous);
    add(std::move(it));
}

/** Those at the same place become one that allows for all that either allows, if it costs no more.
 */
void Hypotheses::add(Hypothesis added)
{
    for (Hypothesis& it : mAll) {
        if (it.mEntry != added.mEntry || it.mSample != added.mSample ||
            it.mKnownCommands != added.mKnownCommands) {
            continue;
        }
        if (it.covers(added)) {
            return;
        }
        if (added.covers(it)) {
            it = std::move(added);
            return;
        }
        if (it.mCost == added.mCost && it.mUnknownCommands == added.mUnknownCommands) {
            it.mMinRepetition = std::min(it.mMinRepetition, added.mMinRepetition);
            it.mMaxRepetition = std::max(it.mMaxRepetition, added.mMaxRepetition);
            it.mContinuous.insert(added.mContinuous.begin(), added.mContinuous.end());
            return;
        }
    }
    mAll.push_back(std::move(added));
}

void Hypotheses::keepLikeliest()
{
    const int most = leastCost() + kMaxAbove;
    mAll.erase(std::remove_if(mAll.begin(), mAll.end(),
                              [most](const Hypothesis& it) { return it.mCost > most; }),
               mAll.end());
    if (mAll.size() > kMaxHypotheses) {
        std::stable_sort(mAll.begin(), mAll.end(), [](const auto& left, const auto& right) {
            return left.mCost < right.mCost;
        });
        mAll.erase(mAll.begin() + kMaxHypotheses, mAll.end());
    }
}

int Hypotheses::leastCost() const
{
    return mAll.empty() ? 0 : likeliest().mCost;
}

const Hypothesis& Hypotheses::likeliest() const
{
    return *std::min_element(mAll.begin(), mAll.end(), [](const auto& left, const auto& right) {
        return left.mCost < right.mCost;
    });
}

size_t Hypotheses::skipTime(qint64 gapNs)
{
    std::vector<Path> open;
    for (Hypothesis& it : mAll) {
        if (gapNs <= kLongestGapNs) {
            open.push_back({std::move(it), gapNs, 0});
        }
    }
    mAll.clear();
    std::optional<size_t> lost;
    for (size_t blocks = 0; !open.empty() && blocks < kMaxBlocks; ++blocks) {
        const Path path = std::move(open.back());
        open.pop_back();
        if (path.mLeftNs > 0) {
            continuePath(path, &open);
            continue;
        }
        lost = std::min(lost.value_or(path.mLost), path.mLost);
        add(path.mAt);
    }
    return lost.value_or(0);
}

/** Follows a path to its end, where nothing is left, or to the end of its block. */
void Hypotheses::continuePath(Path path, std::vector<Path>* open) const
{
    const PlayedFile& file = mPlan->fileOf(path.mAt.mEntry);
    size_t& sample = path.mAt.mSample;
    const size_t blockEnd = (sample / kSamplesPerPeriod + 1) * kSamplesPerPeriod;
    const size_t samples = std::min(blockEnd, file.mSamples.size()) - sample;
    const auto spanNs = static_cast<qint64>(samples * file.stepAt(sample));
    if (path.mLeftNs <= spanNs) {
        const qint64 stepNs = file.stepAt(sample);
        if (path.mLeftNs % stepNs == 0) {
            const auto lost = static_cast<size_t>(path.mLeftNs / stepNs) - 1;
            sample += lost;
            open->push_back({path.mAt, 0, path.mLost + lost});
        }
        return;
    }
    sample += samples;
    Hypotheses following(*mPlan);
    if (hasEnded(path.mAt)) {
        following.addFollowing(path.mAt);
    } else {
        following.add(path.mAt);
    }
    for (const Hypothesis& it : following.mAll) {
        if (spanNs > 0) {
            open->push_back({it, path.mLeftNs - spanNs, path.mLost + samples});
        }
    }
}

} // namespace explain
