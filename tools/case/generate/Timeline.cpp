#include "generate/Timeline.h"

#include <algorithm>
#include <cmath>

#include "SampleStep.h"
#include "base/Numbers.h"

namespace generate {

namespace {
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

double playedHertz(float hertz)
{
    return base::kNanosecondsPerSecond / (double(sampleStepOf(hertz)) * kSamplesPerPeriod);
}

Timeline::Timeline(const WaveParameters& parameters)
    : mFrequency(parameters.mFrequency),
      mLineCount(std::llround(parameters.mDuration * double(parameters.mFrequency)) *
                 kSamplesPerPeriod),
      mEndSeconds(double(mLineCount) / (double(parameters.mFrequency) * kSamplesPerPeriod))
{
    if (!parameters.mCourse.empty()) {
        follow(parameters.mCourse, parameters.mDuration);
    }
}

Timeline::Timeline(const std::vector<float>& frequencies, qint64 lineCount)
    : mFrequency(frequencies.front()), mLineCount(lineCount), mEndSeconds(0.0)
{
    for (const float frequency : frequencies) {
        add(frequency);
    }
    const qint64 last = lineCount - 1;
    mEndSeconds = secondsOf(last) + 1.0 / (double(frequencyOf(last)) * kSamplesPerPeriod);
}

/** Adds a period, which begins at mEndSeconds. */
void Timeline::add(float frequency)
{
    mPeriods.push_back({mEndSeconds, mNanoseconds, frequency});
    mEndSeconds += 1.0 / double(frequency);
    mNanoseconds += qint64(sampleStepOf(frequency)) * kSamplesPerPeriod;
}

void Timeline::follow(const std::vector<FrequencyPoint>& course, double duration)
{
    mEndSeconds = 0.0;
    for (;;) {
        const double middle = mEndSeconds + 0.5 / hertzAt(course, mEndSeconds);
        if (middle > duration) {
            break;
        }
        add(float(hertzAt(course, middle)));
    }
    mLineCount = qint64(mPeriods.size()) * kSamplesPerPeriod;
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
        return double(line * sampleStepOf(mFrequency)) * base::kSecondsPerNanosecond;
    }
    // The step of a period also precedes its first line.
    const Period& period = mPeriods[size_t(line / kSamplesPerPeriod)];
    const qint64 lines = line % kSamplesPerPeriod + 1;
    return double(period.mNanoseconds + lines * sampleStepOf(period.mFrequency) -
                  sampleStepOf(mPeriods.front().mFrequency)) *
           base::kSecondsPerNanosecond;
}

Position Timeline::positionOf(qint64 line) const
{
    if (line < mLineCount) {
        return {line, stampOf(line)};
    }
    const qint64 last = mLineCount - 1;
    const double step = double(sampleStepOf(frequencyOf(last))) * base::kSecondsPerNanosecond;
    return {line, stampOf(last) + step};
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
