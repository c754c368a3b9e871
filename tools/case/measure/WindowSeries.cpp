#include "measure/WindowSeries.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace measure {

namespace {
constexpr qint64 kTenMinutesNs = 600 * waveform::kSecondInNs;
constexpr size_t kWindowsOfThreeSeconds = 15;

/** Samples that are this close to a full 10 minutes count as exactly at it. */
constexpr qint64 kAtMarkNs = 1000;

qint64 markFrom(qint64 utcNs)
{
    return (utcNs + kTenMinutesNs - 1) / kTenMinutesNs * kTenMinutesNs;
}
} // namespace

WindowSeries::WindowSeries(WindowMeter meter, WindowRows rows, qint64 beginUtcNs)
    : mMeter(std::move(meter)), mRows(std::move(rows)), mBeginUtcNs(beginUtcNs)
{
}

qint64 WindowSeries::utcOf(double seconds) const
{
    return mBeginUtcNs + std::llround(seconds * base::kNanosecondsPerSecond);
}

void WindowSeries::begin(size_t first, double seconds)
{
    const qint64 utc = utcOf(seconds);
    const qint64 mark = markFrom(utc - kAtMarkNs);
    Chain chain;
    chain.mNext = first;
    chain.mBeganAtMark = mark <= utc;
    mChains.push_back(chain);
    mNextMarkNs = chain.mBeganAtMark ? mark + kTenMinutesNs : mark;
    mHasBegun = true;
}

void WindowSeries::take(const SampleHistory& samples, MeasurementOutput& output)
{
    if (samples.end() == samples.begin()) {
        return;
    }
    if (!mHasBegun) {
        begin(samples.begin(), samples.secondsOf(samples.begin()));
    }
    while (mSearched < samples.end() &&
           utcOf(samples.secondsOf(samples.end() - 1)) >= mNextMarkNs - kAtMarkNs) {
        size_t mark = std::max(mSearched, samples.begin());
        while (utcOf(samples.secondsOf(mark)) < mNextMarkNs - kAtMarkNs) {
            ++mark;
        }
        endAtMark(mark);
        Chain chain;
        chain.mNext = mark;
        chain.mBeganAtMark = true;
        mChains.push_back(chain);
        mNextMarkNs += kTenMinutesNs;
        mSearched = mark;
    }
    mSearched = samples.end();
    for (Chain& chain : mChains) {
        measureChain(chain, samples, output);
    }
    mChains.remove_if([](const Chain& chain) {
        return chain.isOver() && !chain.mHasTenMinutes && chain.mInThreeSeconds == 0;
    });
}

void WindowSeries::endAtMark(size_t sample)
{
    mChains.back().mEnd = std::max<size_t>(sample, 1);
    mChains.back().mEndUtcNs = mNextMarkNs;
}

void WindowSeries::measureChain(Chain& chain, const SampleHistory& samples,
                                MeasurementOutput& output)
{
    while (chain.mNext + mMeter.length() <= samples.end() &&
           (!chain.isOver() || chain.mInThreeSeconds > 0)) {
        measureWindow(chain, samples, output);
    }
    if (chain.isOver() && chain.mHasTenMinutes) {
        chain.mHasTenMinutes = false;
        if (chain.mBeganAtMark) {
            chain.mTenMinutes.end(Interval::TenMinutes, chain.mEndUtcNs, output);
        }
    }
}

void WindowSeries::measureWindow(Chain& chain, const SampleHistory& samples,
                                 MeasurementOutput& output)
{
    const WindowValues values = mMeter.measure(samples, chain.mNext);
    const size_t end = chain.mNext + mMeter.length();
    const double endSeconds = samples.secondsAt(static_cast<double>(end));
    const double hertz = static_cast<double>(mMeter.length()) / kSamplesPerPeriod /
                         (endSeconds - samples.secondsOf(chain.mNext));
    for (const Measurement& row : mRows.rowsOf(values, utcOf(endSeconds), hertz)) {
        chain.mThreeSeconds.add(row);
        if (!chain.isOver()) {
            chain.mTenMinutes.add(row);
            output.add(row);
        }
    }
    chain.mNext = end;
    if (++chain.mInThreeSeconds == kWindowsOfThreeSeconds) {
        chain.mThreeSeconds.end(Interval::ThreeSeconds, utcOf(endSeconds), output);
        chain.mInThreeSeconds = 0;
    }
}

/** A 10-minute interval that ends with the signal is complete. */
void WindowSeries::finish(const SampleHistory& samples, MeasurementOutput& output)
{
    if (!mHasBegun || samples.end() < samples.begin() + 2) {
        return;
    }
    const double end = samples.secondsAt(static_cast<double>(samples.end()));
    if (utcOf(end) >= mNextMarkNs - kAtMarkNs) {
        endAtMark(samples.end());
    }
    for (Chain& chain : mChains) {
        measureChain(chain, samples, output);
    }
}

size_t WindowSeries::needed() const
{
    size_t first = mSearched;
    for (const Chain& chain : mChains) {
        first = std::min(first, chain.mNext);
    }
    return first;
}

} // namespace measure
