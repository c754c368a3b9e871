#include "measure/PeriodFrequency.h"

#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace measure {

namespace {
constexpr qint64 kTenSecondsNs = 10 * waveform::kSecondInNs;
constexpr double kMinSeconds = 5.0; ///< min measured time of an interval

/** Times that are closer are equal; they differ by rounding to whole ns of the steps. */
constexpr qint64 kSameNs = 1000;
} // namespace

PeriodFrequency::PeriodFrequency(qint64 beginUtcNs)
    : mBeginUtcNs(beginUtcNs),
      mIntervalUtcNs((beginUtcNs - kSameNs + kTenSecondsNs - 1) / kTenSecondsNs * kTenSecondsNs)
{
}

qint64 PeriodFrequency::utcOf(double seconds) const
{
    return mBeginUtcNs + std::llround(seconds * base::kNanosecondsPerSecond);
}

void PeriodFrequency::add(const ClockPeriod& period, MeasurementOutput& output)
{
    const qint64 end = utcOf(period.mEnd);
    while (end > mIntervalUtcNs + kTenSecondsNs + kSameNs) {
        closeInterval(output);
    }
    if (!period.mIsMeasured) {
        return;
    }
    const double seconds = period.mEnd - period.mBegin;
    output.add({end, period.mCycles / seconds, {QuantityId::Frequency}});
    if (utcOf(period.mBegin) >= mIntervalUtcNs - kSameNs) {
        mCycles += period.mCycles;
        mSeconds += seconds;
    }
}

void PeriodFrequency::closeInterval(MeasurementOutput& output)
{
    mIntervalUtcNs += kTenSecondsNs;
    if (mSeconds >= kMinSeconds) {
        output.add({mIntervalUtcNs, mCycles / mSeconds, {QuantityId::FrequencyTenSeconds}});
    }
    mCycles = 0.0;
    mSeconds = 0.0;
}

void PeriodFrequency::finish(double seconds, MeasurementOutput& output)
{
    if (utcOf(seconds) >= mIntervalUtcNs + kTenSecondsNs - kSameNs) {
        closeInterval(output);
    }
}

} // namespace measure
