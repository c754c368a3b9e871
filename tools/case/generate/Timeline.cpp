#include "generate/Timeline.h"

#include <algorithm>
#include <cmath>

#include "SampleStep.h"

namespace generate {

namespace {
constexpr double kNanosecond = 1e-9;

double hertzAt(const std::vector<FrequencyPoint>& course, double seconds)
{
    const auto next =
        std::find_if(course.begin(), course.end(),
                     [seconds](const FrequencyPoint& point) { return point.mSeconds > seconds; });
    if (next == course.begin()) {
        return course.front().mHertz;
    }
    if (next == course.end()) {
        return course.back().mHertz;
    }
    const FrequencyPoint& last = *(next - 1);
    const double share = (seconds - last.mSeconds) / (next->mSeconds - last.mSeconds);
    return last.mHertz + share * (next->mHertz - last.mHertz);
}
} // namespace

Timeline::Timeline(const WaveParameters& parameters)
    : mFrequency(parameters.mFrequency),
      mPeriodCount(std::llround(parameters.mDuration * double(parameters.mFrequency))),
      mEndSeconds(double(mPeriodCount) / double(parameters.mFrequency))
{
    if (!parameters.mCourse.empty()) {
        follow(parameters.mCourse, parameters.mDuration);
    }
}

void Timeline::follow(const std::vector<FrequencyPoint>& course, double duration)
{
    Period period{0.0, 0, 0.0F};
    for (;;) {
        const double middle = period.mSeconds + 0.5 / hertzAt(course, period.mSeconds);
        if (middle > duration) {
            break;
        }
        period.mFrequency = float(hertzAt(course, middle));
        mPeriods.push_back(period);
        period.mSeconds += 1.0 / double(period.mFrequency);
        period.mNanoseconds += qint64(sampleStepOf(period.mFrequency)) * kSamplesPerPeriod;
    }
    mPeriodCount = qint64(mPeriods.size());
    mEndSeconds = period.mSeconds;
}

float Timeline::frequencyOf(qint64 line) const
{
    return mPeriods.empty() ? mFrequency : mPeriods[size_t(line / kSamplesPerPeriod)].mFrequency;
}

double Timeline::secondsOf(qint64 line) const
{
    if (mPeriods.empty()) {
        return double(line) / (double(mFrequency) * kSamplesPerPeriod);
    }
    const Period& period = mPeriods[size_t(line / kSamplesPerPeriod)];
    return period.mSeconds +
           double(line % kSamplesPerPeriod) / (double(period.mFrequency) * kSamplesPerPeriod);
}

double Timeline::stampOf(qint64 line) const
{
    if (mPeriods.empty()) {
        return double(line * sampleStepOf(mFrequency)) * kNanosecond;
    }
    // The step of a period stands before its first line too.
    const Period& period = mPeriods[size_t(line / kSamplesPerPeriod)];
    const qint64 lines = line % kSamplesPerPeriod + 1;
    return double(period.mNanoseconds + lines * sampleStepOf(period.mFrequency) -
                  sampleStepOf(mPeriods.front().mFrequency)) *
           kNanosecond;
}

qint64 Timeline::lineAt(double seconds) const
{
    if (mPeriods.empty()) {
        return std::llround(seconds * (double(mFrequency) * kSamplesPerPeriod));
    }
    const auto next =
        std::find_if(mPeriods.begin() + 1, mPeriods.end(),
                     [seconds](const Period& period) { return period.mSeconds > seconds; });
    const Period& period = *(next - 1);
    return (next - 1 - mPeriods.begin()) * kSamplesPerPeriod +
           std::llround((seconds - period.mSeconds) * double(period.mFrequency) *
                        kSamplesPerPeriod);
}

} // namespace generate
