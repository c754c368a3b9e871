#include "measure/RecordingLines.h"

#include <algorithm>
#include <utility>

#include "base/CaseError.h"
#include "base/Numbers.h"

namespace measure {

namespace {
constexpr size_t kPartSamples = size_t{1} << 16U;
constexpr size_t kBlockLines = 4096;

/** Pass band of the interpolation as a part of the slower rate, and reach of its kernel. */
constexpr double kPassed = 0.41;
constexpr double kReachSamples = 50.0;
} // namespace

RecordingLines::RecordingLines(waveform::SignalSource& source, const importing::ChannelMap& map,
                               double linesPerSecond)
    : mSource(source), mLinesPerSecond(linesPerSecond)
{
    makeTerms(map);
    mColumns.resize(mSources.size());
    for (size_t column = 0; column < mSources.size(); ++column) {
        const auto& channel = mSource.description().mChannels[mSources[column]];
        mColumns[column].mSkewSeconds = channel.mSkewMicroseconds * base::kSecondsPerMicrosecond;
    }
    readPart();
}

void RecordingLines::makeTerms(const importing::ChannelMap& map)
{
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        const importing::MappedChannel& mapped = map.mChannels[channel];
        for (const importing::MappedChannel::Term& term : mapped.mTerms) {
            const auto found = std::find(mSources.begin(), mSources.end(), term.mSource);
            mTerms.push_back({channel, static_cast<size_t>(found - mSources.begin()),
                              term.mFactor * mapped.mCounts});
            if (found == mSources.end()) {
                mSources.push_back(term.mSource);
            }
        }
    }
}

/** @return false at the end of the source */
bool RecordingLines::collect()
{
    while (!mIsAtEnd && mSeconds.size() < kPartSamples) {
        mIsAtEnd = !mSource.read(mRead);
        mGaps.add(mRead.mSeconds);
        mSeconds.insert(mSeconds.end(), mRead.mSeconds.begin(), mRead.mSeconds.end());
        for (size_t column = 0; column < mSources.size() && !mIsAtEnd; ++column) {
            const std::vector<double>& values = mRead.mValues[mSources[column]];
            mColumns[column].mValues.insert(mColumns[column].mValues.end(), values.begin(),
                                            values.end());
        }
    }
    return !mIsAtEnd;
}

/** Drops the samples that the kernel does not need before the next line. */
void RecordingLines::dropOld()
{
    const double from = static_cast<double>(mNextLine) / mLinesPerSecond - mMargin;
    const auto count = std::lower_bound(mSeconds.begin(), mSeconds.end(), from) - mSeconds.begin();
    mSeconds.erase(mSeconds.begin(), mSeconds.begin() + count);
    for (resampling::SourceColumn& column : mColumns) {
        column.mValues.erase(column.mValues.begin(), column.mValues.begin() + count);
    }
}

/** @return false if no line is left */
bool RecordingLines::readPart()
{
    if (mIsAtEnd) {
        return false;
    }
    auto kernels =
        mInterpolator ? mInterpolator->takeKernels() : resampling::Interpolator::Kernels();
    mInterpolator.reset();
    dropOld();
    collect();
    if (mSeconds.size() < 2 || !(mSeconds.back() > mSeconds.front())) {
        if (mNextLine > 0) {
            return false;
        }
        throw base::CaseError(mSource.description().mFileName +
                              ": expected samples at two or more instants");
    }
    mTimes.emplace(mSeconds, !mSource.description().mRates.empty());
    mBreaks += mTimes->segments().size() - 1;
    mInterpolator.emplace(*mTimes, mColumns, mLinesPerSecond, std::move(kernels));
    if (mMaxHertz == 0.0) {
        findRate();
    }
    mUpTo = mIsAtEnd ? mTimes->end() + 1e-9 : mTimes->end() - mMargin;
    return true;
}

void RecordingLines::findRate()
{
    double slowest = mLinesPerSecond;
    for (const auto& segment : mTimes->segments()) {
        slowest = static_cast<double>(segment.sampleCount()) > kReachSamples
                      ? std::min(slowest, 1.0 / segment.mStep)
                      : slowest;
    }
    mMaxHertz = kPassed * slowest;
    mMargin = kReachSamples / slowest;
}

void RecordingLines::addLine(double seconds, size_t index, waveform::SignalBlock* block)
{
    mInterpolator->valuesAt(seconds, mValues);
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        block->mValues[channel][index] = 0.0;
    }
    block->mSeconds[index] = seconds;
    for (const Term& term : mTerms) {
        block->mValues[term.mChannel][index] += term.mFactor * mValues[term.mColumn];
    }
}

bool RecordingLines::read(waveform::SignalBlock& block)
{
    block.mFirst = mNextLine;
    block.mFrequency.clear();
    block.resize(kChannelCount, kBlockLines);
    size_t count = 0;
    while (count < kBlockLines) {
        const double seconds = static_cast<double>(mNextLine) / mLinesPerSecond;
        if (seconds >= mUpTo) {
            if (!readPart()) {
                break;
            }
            continue;
        }
        addLine(seconds, count, &block);
        ++mNextLine;
        ++count;
    }
    block.resize(kChannelCount, count);
    return count > 0;
}

} // namespace measure
