#include "comtrade/ComtradeClock.h"

#include <fmt/format.h>

#include <cmath>

namespace comtrade {

namespace {
/** Max relative difference between the durations by rates and by time stamps. */
constexpr double kMaxDifference = 0.01;

/** Recorders take at least 20 samples per period; with fewer, the 9th harmonic is lost. */
constexpr double kMinSamplesInPeriod = 20.0;
} // namespace

bool ComtradeClock::stamp(const ComtradeBlock& block, double* seconds)
{
    for (size_t i = 0; i < block.size(); ++i) {
        if (mHeader.mRates.empty()) {
            if (!nextByStamp(block.mStamps[i], &seconds[i])) {
                return false;
            }
        } else {
            seconds[i] = nextByRate();
            compare(block.mStamps[i], seconds[i]);
        }
        ++mSamples;
    }
    return true;
}

double ComtradeClock::nextByRate()
{
    const std::vector<waveform::SampleRate>& rates = mHeader.mRates;
    while (mRate + 1 < rates.size() && mSamples >= rates[mRate].mEnd) {
        mRateSeconds += static_cast<double>(mSamples - mRateBegin) / rates[mRate].mHz;
        mRateBegin = mSamples;
        ++mRate;
    }
    return mRateSeconds + static_cast<double>(mSamples - mRateBegin) / rates[mRate].mHz;
}

bool ComtradeClock::nextByStamp(qint64 stamp, double* seconds)
{
    const bool hasStamp = stamp != ComtradeBlock::kNoStamp;
    *seconds =
        (hasStamp ? mStamped.next(stamp) : mStamped.nextWithoutStamp()) * mHeader.mStampSeconds;
    mLastSeconds = *seconds;
    return mSamples > 0 || hasStamp;
}

bool ComtradeClock::hasNoTime() const
{
    return mHeader.mRates.empty() && mSamples > 1 && (mLastSeconds == 0.0 || !mStamped.isTime());
}

void ComtradeClock::compare(qint64 stamp, double seconds)
{
    if (stamp == ComtradeBlock::kNoStamp) {
        return;
    }
    mFirstStamp = mFirstStamp == ComtradeBlock::kNoStamp ? stamp : mFirstStamp;
    mStampedSeconds = static_cast<double>(stamp - mFirstStamp) * mHeader.mStampSeconds;
    mRatedSeconds = seconds;
}

void ComtradeClock::remarkOn(base::Remarks* remarks) const
{
    for (const std::string& remark : mStamped.remarks()) {
        remarks->add(remark);
    }
    // If all time stamps are 0, there are none.
    const double difference = std::abs(mStampedSeconds - mRatedSeconds);
    if (mStampedSeconds != 0.0 && difference > kMaxDifference * mRatedSeconds) {
        remarks->add(
            fmt::format("time stamps end at {:.6g} s, the rate at {:.6g} s: the rate is used",
                        mStampedSeconds, mRatedSeconds));
    }
    double slowest = mHeader.mRates.empty() ? 0.0 : mHeader.mRates[0].mHz;
    for (const waveform::SampleRate& rate : mHeader.mRates) {
        slowest = std::min(slowest, rate.mHz);
    }
    if (mHeader.mRates.empty() && mLastSeconds > 0.0) {
        slowest = static_cast<double>(mSamples - 1) / mLastSeconds;
    }
    const double inPeriod = mHeader.mNominalHz > 0.0 ? slowest / mHeader.mNominalHz : 0.0;
    if (inPeriod > 0.0 && inPeriod < kMinSamplesInPeriod) {
        remarks->add(fmt::format(
            "{:.3g} samples in a period: the recording was filtered or thinned", inPeriod));
    }
}

} // namespace comtrade
