#include "plot/Difference.h"

#include <algorithm>
#include <cmath>

#include "base/ProgressLine.h"

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
            if (a.mPlace == b.mPlace) {
                pairs.push_back({a, b});
            }
        }
    }
    return pairs;
}

bool Difference::Reader::hasSample()
{
    if (mNext == mBlock.size()) {
        mNext = 0;
        return mSource.read(mBlock);
    }
    return true;
}

void Difference::Reader::skipTo(double begin)
{
    while (hasSample() && seconds() < begin - kSameInstant) {
        ++mNext;
    }
}

bool Difference::read(waveform::SignalSource& left, waveform::SignalSource& right)
{
    base::ProgressLine line("comparing");
    Reader a{left};
    Reader b{right};
    if (a.hasSample() && b.hasSample()) {
        const double begin = std::max(a.seconds(), b.seconds());
        a.skipTo(begin);
        b.skipTo(begin);
    }
    while (a.hasSample() && b.hasSample()) {
        const size_t count = std::min(a.mBlock.size() - a.mNext, b.mBlock.size() - b.mNext);
        if (!compare(a, b, count)) {
            return false;
        }
        a.mNext += count;
        b.mNext += count;
        mSamples += count;
        line.show(left.progress());
    }
    return mSamples > 0;
}

bool Difference::compare(const Reader& left, const Reader& right, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        const double seconds = left.mBlock.mSeconds[left.mNext + i];
        if (std::abs(seconds - right.mBlock.mSeconds[right.mNext + i]) > kSameInstant) {
            return false;
        }
        for (size_t group = 0; group < mPairs.size(); ++group) {
            mValues.clear();
            for (const Pair& pair : mPairs[group]) {
                const double a = left.mBlock.mValues[pair.mLeft.mIndex][left.mNext + i];
                const double b = right.mBlock.mValues[pair.mRight.mIndex][right.mNext + i];
                mValues.push_back(b * pair.mRight.mFactor - a * pair.mLeft.mFactor);
                if (std::abs(mValues.back()) > mLargest[group].mValue) {
                    mLargest[group] = {std::abs(mValues.back()), seconds};
                }
            }
            mCurves[group].add(seconds, mValues);
        }
    }
    return true;
}

} // namespace plot
