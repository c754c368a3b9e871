#include "importing/Steadiness.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace importing {

namespace {
/**
 * A few percent: power swings and rounding by relays stay below, the first period of a fault
 * exceeds it.
 */
constexpr double kMaxDifference = 0.03;

/** Instants at which two periods are compared. */
constexpr size_t kInstants = 360;

struct Period
{
    double mBegin; ///< s
    double mLength;
};

/** RMS values of the channels in counts: of a period, and of its difference from another one. */
struct Comparison
{
    Counts mRms{};
    Counts mDifference{};
};

Comparison compare(MappedSignal& signal, const Period& a, const Period& b)
{
    Comparison result;
    for (size_t i = 0; i < kInstants; ++i) {
        const double share = (static_cast<double>(i) + 0.5) / kInstants;
        const Counts first = signal.countsAt(a.mBegin + share * a.mLength);
        const Counts second = signal.countsAt(b.mBegin + share * b.mLength);
        for (size_t channel = 0; channel < first.size(); ++channel) {
            const double difference = second[channel] - first[channel];
            result.mRms[channel] += first[channel] * first[channel] / kInstants;
            result.mDifference[channel] += difference * difference / kInstants;
        }
    }
    for (Counts* counts : {&result.mRms, &result.mDifference}) {
        std::transform(counts->begin(), counts->end(), counts->begin(),
                       [](double square) { return std::sqrt(square); });
    }
    return result;
}

/** A channel and the difference between two of its periods, relative to its quantity. */
struct Deviation
{
    size_t mChannel = 0;
    double mShare = 0.0;
};

/**
 * Differences are relative to the largest channel of the quantity, since a neutral may be near 0. A
 * difference below one count is rounding.
 */
Deviation largestDeviation(const Comparison& comparison, const ChannelMap& map)
{
    Deviation largest;
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        double rms = 0.0;
        for (size_t other = 0; other < kChannelCount; ++other) {
            const bool isSame = map.mChannels[other].mQuantity == map.mChannels[channel].mQuantity;
            rms = isSame ? std::max(rms, comparison.mRms[other]) : rms;
        }
        const double difference = comparison.mDifference[channel];
        const double share = rms > 0.0 ? difference / rms : HUGE_VAL;
        if (difference > 1.0 && share > largest.mShare) {
            largest = {channel, share};
        }
    }
    return largest;
}

std::string remarkOn(const char* option, const char* period, const char* other,
                     const Deviation& deviation, const ChannelMap& map)
{
    return fmt::format(
        "{} repeats the {} period, which is not steady: the one {} it differs by "
        "{:.0f} % (channel {}, {})",
        option, period, other, std::min(deviation.mShare, 1e4) * 100.0, deviation.mChannel,
        map.mChannels[deviation.mChannel].mText);
}
} // namespace

std::vector<std::string> remarksOnRepeated(MappedSignal& signal, const ImportPlan& plan,
                                           const ChannelMap& map, const ImportOptions& options)
{
    std::vector<std::string> remarks;
    const bool isRepeated = options.mBefore > 0 || options.mAfter > 0 || options.mDoLoop;
    const double second = plan.mFrom + plan.mFirstPeriod;
    const double last = plan.mTo - plan.mLastPeriod;
    const double length = plan.periodFrom(second);
    const double lengthBefore = plan.periodBefore(last);
    if (isRepeated && (second + length > plan.mTo + kRoundingOfSeconds ||
                       last - lengthBefore < plan.mFrom - kRoundingOfSeconds)) {
        return {
            "fewer than two periods are imported: it is not known whether the repeated "
            "one is steady"};
    }
    if (options.mBefore > 0 || options.mDoLoop) {
        const auto found = largestDeviation(
            compare(signal, {plan.mFrom, plan.mFirstPeriod}, {second, length}), map);
        if (found.mShare > kMaxDifference) {
            remarks.push_back(remarkOn(options.mBefore > 0 ? "--before" : "--loop", "first",
                                       "after", found, map));
        }
    }
    if (options.mAfter > 0 || options.mDoLoop) {
        const auto found = largestDeviation(
            compare(signal, {last, plan.mLastPeriod}, {last - lengthBefore, lengthBefore}), map);
        if (found.mShare > kMaxDifference) {
            remarks.push_back(
                remarkOn(options.mAfter > 0 ? "--after" : "--loop", "last", "before", found, map));
        }
    }
    return remarks;
}

} // namespace importing
