#include "plot/Difference.h"

#include <algorithm>
#include <cmath>

namespace plot {

namespace {
constexpr double kSameInstant = 1e-6; ///< s
} // namespace

Difference::Difference(const DrawnChannels& left, const DrawnChannels& right, size_t columns)
{
    for (const DrawnGroup& group : left.groups()) {
        const DrawnGroup* const other = right.groupLike(group);
        mPairs.push_back(other == nullptr ? std::vector<Pair>() : pairsOf(group, *other));
        mCurves.emplace_back(mPairs.back().size(), columns);
    }
    mLargest.resize(mPairs.size());
}

std::vector<Difference::Pair> Difference::pairsOf(const DrawnGroup& left, const DrawnGroup& right)
{
    std::vector<Pair> pairs;
    for (const DrawnChannel& a : left.mChannels) {
        for (const DrawnChannel& b : right.mChannels) {
            if (a.mConductor == b.mConductor) {
                pairs.push_back({a, b});
            }
        }
    }
    return pairs;
}

void Difference::Side::advance(size_t samples)
{
    mNext += samples;
    if (mNext == block().size()) {
        mBlocks.pop_front();
        mNext = 0;
    }
}

void Difference::Side::skipTo(double seconds)
{
    while (left() > 0 && block().mSeconds[mNext] < seconds - kSameInstant) {
        advance(1);
    }
}

void Difference::add(size_t side, const SharedBlock& block)
{
    if (mIsOver) {
        return;
    }
    mSides[side].mBlocks.push_back(block);
    align();
    while (const size_t count = mIsAligned ? std::min(mSides[0].left(), mSides[1].left()) : 0) {
        if (!compare(count)) {
            mAreInstantsEqual = false;
            finish();
            return;
        }
        mSides[0].advance(count);
        mSides[1].advance(count);
        mSamples += count;
    }
}

void Difference::finish()
{
    mIsOver = true;
    mSides = {};
}

/** Starts at the later of the two first samples, where both sides have samples. */
void Difference::align()
{
    Side& left = mSides[0];
    Side& right = mSides[1];
    if (mIsAligned || left.left() == 0 || right.left() == 0) {
        return;
    }
    const double begin =
        std::max(left.block().mSeconds[left.mNext], right.block().mSeconds[right.mNext]);
    left.skipTo(begin);
    right.skipTo(begin);
    mIsAligned = left.left() > 0 && right.left() > 0;
}

bool Difference::compare(size_t count)
{
    const waveform::SignalBlock& left = mSides[0].block();
    const waveform::SignalBlock& right = mSides[1].block();
    for (size_t i = mSides[0].mNext, j = mSides[1].mNext; count > 0; ++i, ++j, --count) {
        if (std::abs(left.mSeconds[i] - right.mSeconds[j]) > kSameInstant) {
            return false;
        }
        for (size_t group = 0; group < mPairs.size(); ++group) {
            mValues.clear();
            for (const Pair& pair : mPairs[group]) {
                mValues.push_back(right.mValues[pair.mRight.mCurve][j] -
                                  left.mValues[pair.mLeft.mCurve][i]);
                if (std::abs(mValues.back()) > mLargest[group].mValue) {
                    mLargest[group] = {std::abs(mValues.back()), left.mSeconds[i]};
                }
            }
            mCurves[group].add(left.mSeconds[i], mValues);
        }
    }
    return true;
}

} // namespace plot
