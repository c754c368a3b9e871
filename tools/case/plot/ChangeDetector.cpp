#include "plot/ChangeDetector.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Sums.h"

namespace plot {

namespace {
/**
 * A dip or a swell changes a voltage by 10 % or more (the usual thresholds, 90 % and 110 %). One
 * that begins in the middle of a period shows as 7 % of rms in each of two periods; changes of load
 * and flicker stay below 3 %. This is between them.
 */
constexpr double kMinScore = 0.05;

/**
 * Grids leave 45 to 55 Hz only when they fail: such a change of the frequency, 10 %, counts as a
 * voltage that falls by half.
 */
constexpr double kFrequencyScore = 5.0;

/**
 * A change begins where the difference reaches this part of its maximum: for a step at once, for a
 * change that grows from a zero crossing of the voltage after a thirtieth of a period (asin 0.2).
 * It is above the rounding of small signals.
 */
constexpr double kOnset = 0.2;

/**
 * A change within a period extends into the next one; in the second one after it, it has settled.
 */
constexpr size_t kSettled = 2;

/** The value of the period at any phase, by linear interpolation between its samples. */
double valueAt(const Period& period, size_t curve, double phase)
{
    const auto above =
        std::lower_bound(period.mPhases.begin() + 1, period.mPhases.end() - 1, phase);
    const auto right = static_cast<size_t>(above - period.mPhases.begin());
    const double step = period.mPhases[right] - period.mPhases[right - 1];
    const double share = step > 0.0 ? (phase - period.mPhases[right - 1]) / step : 0.0;
    const std::vector<double>& values = period.mValues[curve];
    return values[right - 1] + share * (values[right] - values[right - 1]);
}

std::string number(double value)
{
    return std::abs(value) < 100.0 ? fmt::format("{:.3g}", value) : fmt::format("{:.0f}", value);
}
} // namespace

ChangeDetector::ChangeDetector(const DrawnChannels& channels)
    : mGroups(channels.groups()), mScales(mGroups.size())
{
    for (size_t i = 0; i < mGroups.size(); ++i) {
        for (const DrawnChannel& channel : mGroups[i].mChannels) {
            mChannels.push_back(channel);
            mGroupOf.push_back(i);
        }
    }
    mLastRms.resize(mChannels.size());
    mLastDifferences.resize(mChannels.size());
}

void ChangeDetector::add(const Period& last, const Period& period, const std::vector<double>& rms)
{
    completeLast(rms);
    for (size_t i = 0; i < rms.size(); ++i) {
        mScales[mGroupOf[i]] = std::max(mScales[mGroupOf[i]], rms[i]);
    }
    if (last.size() < 2) {
        // There is nothing to compare with. The next difference must not count as a rise.
        mLastDifferences.assign(rms.size(), std::numeric_limits<double>::infinity());
    } else {
        const Change change = findChange(last, period);
        if (change.mScore > kMinScore) {
            keep(change);
        }
    }
    mLastRms = rms;
    ++mPeriods;
}

/** The largest change that begins in this period. */
Change ChangeDetector::findChange(const Period& last, const Period& period)
{
    Change best;
    double onset = period.mEnd;
    for (size_t i = 0; i < mChannels.size(); ++i) {
        const double difference = differenceOf(last, period, i);
        const double scale = mScales[mGroupOf[i]];
        const double rise = scale > 0.0 ? (difference - mLastDifferences[i]) / scale : 0.0;
        mLastDifferences[i] = difference;
        // The channel with the largest change may show it late, if its jump is near a zero
        // crossing.
        onset = rise > kMinScore ? std::min(onset, onsetIn(period)) : onset;
        if (rise > best.mScore) {
            best = {0.0, rise, mPeriods, i, mLastRms[i], mLastRms[i]};
        }
    }
    best.mSeconds = onset;
    const double pace = std::abs(period.length() / last.length() - 1.0) * kFrequencyScore;
    if (pace > best.mScore && std::isfinite(pace)) {
        best = {period.mBegin,        pace, mPeriods, mChannels.size(), 1.0 / last.length(),
                1.0 / period.length()};
    }
    return best;
}

/** @return the rms of the difference between the period and the last one */
double ChangeDetector::differenceOf(const Period& last, const Period& period, size_t curve)
{
    mDifference.resize(period.size());
    const std::vector<double>& values = period.mValues[curve];
    if (last.mPhases == period.mPhases) {
        for (size_t i = 0; i < values.size(); ++i) {
            mDifference[i] = values[i] - last.mValues[curve][i];
        }
    } else {
        for (size_t i = 0; i < values.size(); ++i) {
            mDifference[i] = values[i] - valueAt(last, curve, period.mPhases[i]);
        }
    }
    return base::rootMeanSquare(mDifference);
}

/** The time at which the change in mDifference begins. */
double ChangeDetector::onsetIn(const Period& period)
{
    double peak = 0.0;
    for (double& difference : mDifference) {
        difference = std::abs(difference);
        peak = std::max(peak, difference);
    }
    const auto onset = std::find_if(mDifference.begin(), mDifference.end(),
                                    [&](double difference) { return difference >= kOnset * peak; });
    return period.mSeconds[static_cast<size_t>(onset - mDifference.begin())];
}

void ChangeDetector::completeLast(const std::vector<double>& rms)
{
    if (mChanges.empty()) {
        return;
    }
    Change& last = mChanges.back();
    if (last.mCurve < rms.size() && mPeriods <= last.mPeriod + kSettled) {
        last.mAfter = rms[last.mCurve];
    }
}

/** Adds a change. If one began in the period before, it often grows in the next: both are one. */
void ChangeDetector::keep(const Change& change)
{
    if (!mChanges.empty() && change.mPeriod <= mChanges.back().mPeriod + 1) {
        Change& last = mChanges.back();
        last.mScore = std::max(last.mScore, change.mScore);
        return;
    }
    if (mChanges.size() == kMaxChanges) {
        dropLowest();
    }
    mChanges.push_back(change);
}

/** Drops the change with the lowest score; of equal ones the last. */
void ChangeDetector::dropLowest()
{
    const auto lowest =
        std::min_element(mChanges.rbegin(), mChanges.rend(),
                         [](const Change& a, const Change& b) { return a.mScore < b.mScore; });
    mChanges.erase(std::next(lowest).base());
}

std::string ChangeDetector::textOf(const Change& change) const
{
    const std::string time = fmt::format("{:.4g} s: ", change.mSeconds);
    if (change.mCurve == mChannels.size()) {
        return time + fmt::format("{} Hz → {} Hz", number(change.mBefore), number(change.mAfter));
    }
    const std::string& label = mChannels[change.mCurve].mLabel;
    const size_t group = mGroupOf[change.mCurve];
    const ShownUnit unit = shownUnit(mGroups[group], mScales[group]);
    const std::string before = number(change.mBefore * unit.mFactor);
    const std::string after = number(change.mAfter * unit.mFactor);
    return time + (before == after
                       ? label + " changes its form or phase"
                       : fmt::format("{} {} → {} {}", label, before, after, unit.mName));
}

} // namespace plot
