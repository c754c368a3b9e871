#include "comtrade/ComtradeSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/CaseError.h"
#include "waveform/MissingValues.h"

namespace comtrade {

namespace {
constexpr size_t kBlockValues = 32768; ///< values per block, to fit the cache
constexpr size_t kMaxBlockSamples = 4096;
constexpr double kUsualHz = 50.0; ///< if no nominal frequency is given
constexpr double kMicrosecondsPerSecond = 1e6;
} // namespace

ComtradeSource::ComtradeSource(ComtradeParts parts)
    : mParts(std::move(parts)),
      mRecords(makeComtradeRecords(*mParts.mData, mParts.mHeader, mParts.mFirstDataLine)),
      mClock(mParts.mHeader),
      mStates(&mDescription.mStatusChannels),
      mBlockSamples(std::clamp<size_t>(
          kBlockValues / std::max<size_t>(mParts.mHeader.mAnalogs.size(), 1), 1, kMaxBlockSamples)),
      mLastValues(mParts.mHeader.mAnalogs.size())
{
    describe();
}

void ComtradeSource::describe()
{
    const ComtradeHeader& header = mParts.mHeader;
    mDescription.mFileName = mParts.mName;
    mDescription.mFormat =
        fmt::format("COMTRADE {}, {}", static_cast<int>(header.mRevision), nameOf(header.mKind));
    mDescription.mStation = header.mStation;
    mDescription.mDevice = header.mDevice;
    mDescription.mStartTime = header.mStartTime;
    mDescription.mTriggerTime = header.mTriggerTime;
    mDescription.mNominalHz = header.mNominalHz;
    mDescription.mSampleCount = mRecords->count();
    mDescription.mRates = header.mRates;
    for (const ComtradeAnalog& analog : header.mAnalogs) {
        mDescription.mChannels.push_back(analog.mChannel);
    }
    mDescription.mStatusChannels = header.mStatuses;
    remarkOnChannels();
    mDescription.mRemarks = mParts.mRemarks.take();
}

/** Adds remarks on implausible settings of channels. */
void ComtradeSource::remarkOnChannels()
{
    const double hz = mParts.mHeader.mNominalHz > 0.0 ? mParts.mHeader.mNominalHz : kUsualHz;
    for (const ComtradeAnalog& analog : mParts.mHeader.mAnalogs) {
        if (analog.mFactor == 0.0) {
            mParts.mRemarks.addFor(
                fmt::format("its factor is 0 in the configuration: every value is {:g}",
                            analog.mOffset),
                analog.mChannel.mNumber);
        }
        const double skew = analog.mChannel.mSkewMicroseconds;
        if (std::abs(skew) * hz > kMicrosecondsPerSecond) {
            mParts.mRemarks.addFor(
                fmt::format("a skew of {:g} µs, longer than a period of {:g} Hz", skew, hz),
                analog.mChannel.mNumber);
        }
    }
}

bool ComtradeSource::read(waveform::SignalBlock& block)
{
    block.mFirst = mClock.samples();
    block.mFrequency.clear();
    block.resize(mLastValues.size(), mBlockSamples);
    mRecords->read(mBlockSamples, &mBlock, &block.mValues);
    block.resize(mLastValues.size(), mBlock.size());
    const bool hasBegin = mClock.stamp(mBlock, block.mSeconds.data());
    if (!hasBegin || (block.size() == 0 && mClock.hasNoTime())) {
        throw base::CaseError(mParts.mData->name() +
                              ": expected time stamps that rise, from the first "
                              "record on, since the configuration has no rate");
    }
    for (size_t i = 0; i < mLastValues.size(); ++i) {
        scale(i, &block);
    }
    mStates.add(mBlock, block.mSeconds);
    checkNumbers();
    if (block.size() == 0 && !mIsFinished) {
        finish();
    }
    return block.size() > 0;
}

/** Converts the numbers of the file to the unit of the channel. */
void ComtradeSource::scale(size_t channel, waveform::SignalBlock* block)
{
    const double factor = mParts.mHeader.mAnalogs[channel].mFactor;
    const double offset = mParts.mHeader.mAnalogs[channel].mOffset;
    waveform::ChannelDescription& described = mDescription.mChannels[channel];
    double last = mLastValues[channel];
    for (size_t i = 0; i < block->size(); ++i) {
        double& value = block->mValues[channel][i];
        // A missing value is NaN, an overflow infinite: both count as missing.
        const double scaled = factor * value + offset;
        const bool isThere = std::isfinite(scaled);
        if (!isThere && described.mMissing++ == 0) {
            described.mFirstMissing = block->mSeconds[i];
            described.mBeginsMissing = block->mFirst + i == 0;
        }
        last = isThere ? scaled : last;
        value = last;
    }
    mLastValues[channel] = last;
}

/** If sample numbers jump, samples were lost. If they fall to 0 or 1, numbering has restarted. */
void ComtradeSource::checkNumbers()
{
    const size_t first = mClock.samples() - mBlock.size();
    for (size_t i = 0; i < mBlock.size(); ++i) {
        const qint64 number = mBlock.mNumbers[i];
        const bool isFirst = first + i == 0;
        const bool beginsAgain = number == 0 || (number == 1 && number < mLastNumber);
        mJumps += !isFirst && number > mLastNumber + 1 ? 1 : 0;
        mDisorders += !isFirst && number <= mLastNumber && !beginsAgain ? 1 : 0;
        mLastNumber = number;
    }
}

void ComtradeSource::finish()
{
    mIsFinished = true;
    base::Remarks remarks;
    const size_t announced = mParts.mHeader.mAnnouncedSamples;
    if (announced > 0 && announced != mClock.samples()) {
        remarks.add(
            fmt::format("{} samples are announced, {} are there", announced, mClock.samples()));
    }
    if (mJumps > 0) {
        remarks.add(
            fmt::format("the sample numbers jump {} times, as if some were lost: taken "
                        "in the order of the file",
                        mJumps));
    }
    if (mDisorders > 0) {
        remarks.add(
            fmt::format("the sample numbers repeat or fall {} times, as if records were "
                        "repeated or out of order: taken in the order of the file",
                        mDisorders));
    }
    mRecords->remarkOn(&remarks);
    mClock.remarkOn(&remarks);
    waveform::remarkOnMissing(mDescription.mChannels, &remarks);
    for (std::string& text : remarks.take()) {
        mDescription.mRemarks.push_back(std::move(text));
    }
}

} // namespace comtrade
