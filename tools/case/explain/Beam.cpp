#include "explain/Beam.h"

#include <algorithm>

namespace explain {

namespace {
bool isCheaper(const Hypothesis& left, const Hypothesis& right)
{
    return left.mCost < right.mCost;
}
} // namespace

const Hypothesis& Beam::likeliest() const
{
    return *std::min_element(mAll.begin(), mAll.end(), isCheaper);
}

void Beam::insertOrMerge(Hypothesis added)
{
    for (Hypothesis& it : mAll) {
        if (it.mEntry != added.mEntry || it.mKnownCommands != added.mKnownCommands) {
            continue;
        }
        if (it.dominates(added)) {
            return;
        }
        if (added.dominates(it)) {
            it = std::move(added);
            return;
        }
        if (it.absorb(added)) {
            return;
        }
    }
    mAll.push_back(std::move(added));
}

void Beam::insertOrMerge(std::vector<Hypothesis> added)
{
    for (Hypothesis& it : added) {
        insertOrMerge(std::move(it));
    }
}

void Beam::prune()
{
    if (mAll.size() < 2) {
        return;
    }
    const int max = likeliest().mCost + kMaxCostAboveLikeliest;
    mAll.erase(std::remove_if(mAll.begin(), mAll.end(),
                              [max](const Hypothesis& it) { return it.mCost > max; }),
               mAll.end());
    if (mAll.size() > kMaxHypotheses) {
        std::stable_sort(mAll.begin(), mAll.end(), isCheaper);
        mAll.erase(mAll.begin() + kMaxHypotheses, mAll.end());
    }
}

bool Beam::fits(const PlayedFile& file, size_t sample, const SampleContent& content,
                std::optional<qint64> stepNs) const
{
    const quint32 step = file.stepAt(sample);
    return file.samples()[sample] == content && (!stepNs || step == 0 || *stepNs == step);
}

/** All positions except the last are equal, see Hypothesis. */
bool Beam::anyFits(const Hypothesis& it, const SampleContent& content,
                   std::optional<qint64> stepNs) const
{
    const PlayedFile& file = mPlan->fileOf(it.mEntry);
    return fits(file, it.mSample, content, stepNs) ||
           (it.mCount > 1 && fits(file, it.lastSample(), content, stepNs));
}

bool Beam::allows(const SampleContent& content, std::optional<qint64> stepNs) const
{
    return std::any_of(mAll.begin(), mAll.end(),
                       [&](const Hypothesis& it) { return anyFits(it, content, stepNs); });
}

bool Beam::filter(const SampleContent& content, std::optional<qint64> stepNs)
{
    if (!allows(content, stepNs)) {
        return false;
    }
    splitUnequal();
    const auto isWrong = [&](const Hypothesis& it) {
        return !fits(mPlan->fileOf(it.mEntry), it.mSample, content, stepNs);
    };
    const auto firstWrong = std::remove_if(mAll.begin(), mAll.end(), isWrong);
    if (firstWrong != mAll.end()) {
        mAll.erase(firstWrong, mAll.end());
        ++mChanges;
        prune();
    }
    return true;
}

void Beam::splitUnequal()
{
    std::vector<Hypothesis> last;
    for (Hypothesis& it : mAll) {
        const bool isUnequal = it.mCount > 1 && !mPlan->fileOf(it.mEntry).isSame(
                                                    it.lastSample() - it.mStride, it.lastSample());
        if (isUnequal) {
            last.push_back(it.splitLast());
        }
    }
    if (!last.empty()) {
        insertOrMerge(std::move(last));
        ++mChanges;
    }
}

void Beam::filterIf(const std::function<bool(const Beam& alone)>& isRight)
{
    std::vector<Hypothesis> kept;
    Beam alone(*mPlan);
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

} // namespace explain
