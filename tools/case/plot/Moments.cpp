#include "plot/Moments.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace plot {

namespace {
/** Less than this is noise. */
constexpr double kMinWeight = 0.05;

/** A tenth more or less of the frequency is as much as half of the voltage. */
constexpr double kFrequencyWeight = 5.0;

/** A change has begun where this part of its largest difference is reached. */
constexpr double kOnset = 0.2;

/** A change within a period goes into the next one; behind that, its rms tells what it led to. */
constexpr size_t kSettled = 2;

/** Beyond this many the lighter half is forgotten. */
constexpr size_t kMaxCandidates = 256;

double rmsOf(const std::vector<double>& values)
{
    double sum = 0.0;
    for (const double value : values) {
        sum += value * value;
    }
    return std::sqrt(sum / static_cast<double>(values.size()));
}

/** The period's value at a phase that it has no sample at, on a line between its samples. */
double valueAt(const Period& period, size_t channel, double phase)
{
    const auto above =
        std::lower_bound(period.mPhases.begin() + 1, period.mPhases.end() - 1, phase);
    const auto right = static_cast<size_t>(above - period.mPhases.begin());
    const double step = period.mPhases[right] - period.mPhases[right - 1];
    const double share = step > 0.0 ? (phase - period.mPhases[right - 1]) / step : 0.0;
    const std::vector<double>& values = period.mValues[channel];
    return values[right - 1] + share * (values[right] - values[right - 1]);
}

std::string number(double value)
{
    return std::abs(value) < 100.0 ? fmt::format("{:.3g}", value) : fmt::format("{:.0f}", value);
}
} // namespace

Moments::Moments(const DrawnChannels& channels)
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

void Moments::add(const Period& last, const Period& period, const std::vector<double>& rms)
{
    completeLast(rms);
    for (size_t i = 0; i < rms.size(); ++i) {
        mScales[mGroupOf[i]] = std::max(mScales[mGroupOf[i]], rms[i]);
    }
    if (last.size() < 2) {
        // What begins here follows from nothing; the next difference is the one to go by.
        mLastDifferences.assign(rms.size(), std::numeric_limits<double>::infinity());
    } else {
        const Candidate candidate = jumpIn(last, period);
        if (candidate.mWeight > kMinWeight) {
            keep(candidate);
        }
    }
    mLastRms = rms;
    ++mPeriods;
}

/** The largest change that begins in this period. */
Moments::Candidate Moments::jumpIn(const Period& last, const Period& period)
{
    Candidate best;
    double onset = period.mEnd;
    for (size_t i = 0; i < mChannels.size(); ++i) {
        const double difference = differenceOf(last, period, i);
        const double scale = mScales[mGroupOf[i]];
        const double rise = scale > 0.0 ? (difference - mLastDifferences[i]) / scale : 0.0;
        mLastDifferences[i] = difference;
        // The largest may begin late, where the jump of its phase is at a zero.
        onset = rise > kMinWeight ? std::min(onset, onsetIn(period)) : onset;
        if (rise > best.mWeight) {
            best = {0.0, rise, mPeriods, i, mLastRms[i], mLastRms[i]};
        }
    }
    best.mSeconds = onset;
    const double change = std::abs(period.length() / last.length() - 1.0) * kFrequencyWeight;
    if (change > best.mWeight && std::isfinite(change)) {
        best = {period.mBegin,        change, mPeriods, mChannels.size(), 1.0 / last.length(),
                1.0 / period.length()};
    }
    return best;
}

/** @return rms of how the period differs from the last */
double Moments::differenceOf(const Period& last, const Period& period, size_t channel)
{
    mDifference.resize(period.size());
    const std::vector<double>& values = period.mValues[channel];
    if (last.mPhases == period.mPhases) {
        for (size_t i = 0; i < values.size(); ++i) {
            mDifference[i] = values[i] - last.mValues[channel][i];
        }
    } else {
        for (size_t i = 0; i < values.size(); ++i) {
            mDifference[i] = values[i] - valueAt(last, channel, period.mPhases[i]);
        }
    }
    return rmsOf(mDifference);
}

/** When the channel of mDifference has begun to change. */
double Moments::onsetIn(const Period& period)
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

void Moments::completeLast(const std::vector<double>& rms)
{
    if (mCandidates.empty()) {
        return;
    }
    Candidate& last = mCandidates.back();
    if (last.mChannel < rms.size() && mPeriods <= last.mPeriod + kSettled) {
        last.mAfter = rms[last.mChannel];
    }
}

/** What begins in one period often rises in the next: that is one change. */
void Moments::keep(const Candidate& candidate)
{
    if (!mCandidates.empty() && candidate.mPeriod <= mCandidates.back().mPeriod + 1) {
        Candidate& last = mCandidates.back();
        last.mWeight = std::max(last.mWeight, candidate.mWeight);
        return;
    }
    mCandidates.push_back(candidate);
    if (mCandidates.size() > kMaxCandidates) {
        forgetLighterHalf();
    }
}

/** Of those that weigh as much as the last one kept, the first stay. */
void Moments::forgetLighterHalf()
{
    constexpr size_t kKept = kMaxCandidates / 2;
    std::vector<double> weights;
    for (const Candidate& it : mCandidates) {
        weights.push_back(it.mWeight);
    }
    const auto last = weights.begin() + kKept - 1;
    std::nth_element(weights.begin(), last, weights.end(), std::greater<>());
    const double least = *last;
    auto places = std::count(weights.begin(), last + 1, least);
    const auto isLight = [&](const Candidate& it) {
        if (it.mWeight != least) {
            return it.mWeight < least;
        }
        return places-- <= 0;
    };
    mCandidates.erase(std::remove_if(mCandidates.begin(), mCandidates.end(), isLight),
                      mCandidates.end());
}

std::string Moments::textOf(const Candidate& candidate) const
{
    const std::string time = fmt::format("{:.4g} s: ", candidate.mSeconds);
    if (candidate.mChannel == mChannels.size()) {
        return time +
               fmt::format("{} Hz → {} Hz", number(candidate.mBefore), number(candidate.mAfter));
    }
    const std::string& label = mChannels[candidate.mChannel].mLabel;
    const size_t group = mGroupOf[candidate.mChannel];
    const ShownUnit unit = shownUnit(mGroups[group], mScales[group]);
    const std::string before = number(candidate.mBefore * unit.mFactor);
    const std::string after = number(candidate.mAfter * unit.mFactor);
    return time + (before == after
                       ? label + " changes its form or phase"
                       : fmt::format("{} {} → {} {}", label, before, after, unit.mName));
}

std::vector<Moment> Moments::found() const
{
    std::vector<Moment> moments;
    for (const Candidate& it : mCandidates) {
        moments.push_back({it.mSeconds, it.mWeight, textOf(it)});
    }
    return moments;
}

std::vector<Moment> chooseMoments(std::vector<Moment> moments, size_t most, double apart)
{
    std::stable_sort(moments.begin(), moments.end(), [](const Moment& left, const Moment& right) {
        return left.mWeight > right.mWeight;
    });
    std::vector<Moment> chosen;
    for (const Moment& moment : moments) {
        const bool isNear = std::any_of(chosen.begin(), chosen.end(), [&](const Moment& it) {
            return std::abs(it.mSeconds - moment.mSeconds) < apart;
        });
        if (!isNear && chosen.size() < most) {
            chosen.push_back(moment);
        }
    }
    std::sort(chosen.begin(), chosen.end(), [](const Moment& left, const Moment& right) {
        return left.mSeconds < right.mSeconds;
    });
    return chosen;
}

} // namespace plot
