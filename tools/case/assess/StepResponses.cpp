#include "assess/StepResponses.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "assess/QuantityNames.h"
#include "assess/Steps.h"
#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
constexpr qint64 kAroundStepNs = waveform::kSecondInNs / 2;
constexpr qint64 kSameStepNs = waveform::kSecondInNs / 10; ///< closer steps of channels are one

/** The limit of a quantity in steady state. */
std::optional<double> steadyLimit(const LimitTable& limits, const std::string& quantity)
{
    const auto found =
        std::find_if(limits.mLimits.begin(), limits.mLimits.end(), [&quantity](const Limit& limit) {
            return limit.mQuantity == quantity && limit.mAbsolute > 0.0 &&
                   limit.mState.value_or(SignalState::Steady) == SignalState::Steady;
        });
    return found == limits.mLimits.end() ? std::nullopt : std::optional(found->mAbsolute);
}

double errorOf(const Pair& pair)
{
    return std::abs(pair.mMeasured - pair.mExpected);
}

/** The time between two values at which the error crosses the limit, in ns. */
qint64 crossing(const Pair& a, const Pair& b, double limit)
{
    const double share = (limit - errorOf(a)) / (errorOf(b) - errorOf(a));
    return a.mUtcNs + std::llround(share * static_cast<double>(b.mUtcNs - a.mUtcNs));
}

/**
 * Time in s from where the error first exceeds the limit to where it is back within it for good; 0
 * if it never exceeds it.
 */
double responseTime(const std::vector<Pair>& pairs, const Step& step, double limit)
{
    const auto isEarlier = [](const Pair& pair, qint64 ns) { return pair.mUtcNs < ns; };
    const auto begin =
        std::lower_bound(pairs.begin(), pairs.end(), step.mBeginNs - kAroundStepNs, isEarlier);
    const auto end = std::lower_bound(begin, pairs.end(), step.mEndNs + kAroundStepNs, isEarlier);
    const auto isBeyond = [limit](const Pair& pair) { return errorOf(pair) > limit; };
    const auto first = std::find_if(begin, end, isBeyond);
    if (first == end) {
        return 0.0;
    }
    const auto last =
        std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(first), isBeyond)
            .base(); // the one after the last
    const qint64 leaves = first == begin ? first->mUtcNs : crossing(first[-1], *first, limit);
    const qint64 returns = last == end ? last[-1].mUtcNs : crossing(last[-1], *last, limit);
    return static_cast<double>(returns - leaves) * base::kSecondsPerNanosecond;
}

/** @param spacingNs of frames, to which limits refer */
void addValue(Matching& matching, qint64 spacingNs, qint64 utcNs, double value)
{
    matching.mSpacingNs = spacingNs;
    ++matching.mCounts.mExpected;
    matching.mPairs.push_back({utcNs, 0.0, value});
}

/** Adds the computed quantities of the steps of one channel. */
class ChannelSteps
{
public:
    ChannelSteps(const ValueTable& expected, const ValueTable& measured, ComputedSeries& computed)
        : mExpected(expected), mMeasured(measured), mComputed(computed)
    {
    }

    /** @return the steps that were found */
    std::vector<Step> add(const SeriesKey& key);

    void addResponses(const std::vector<Step>& steps, const Matching& errors, double limit,
                      const SeriesKey& key);

private:
    const ValueTable& mExpected;
    const ValueTable& mMeasured;
    ComputedSeries& mComputed;
};

/** Adds delay and overshoot of a series. A step that was not measured counts as missing. */
std::vector<Step> ChannelSteps::add(const SeriesKey& key)
{
    const std::vector<Sample>& wanted = mExpected.find(key)->mSamples;
    const Series* const found = mMeasured.find(key);
    const qint64 spacingNs = spacingOf(wanted);
    std::vector<Step> steps = findSteps(wanted, isAngle(key.mQuantity));
    for (const Step& step : steps) {
        const auto response =
            found == nullptr ? std::nullopt
                             : responseTo(step, wanted, found->mSamples, isAngle(key.mQuantity));
        if (response) {
            addValue(mComputed[{kStepDelay, key.mChannel}], spacingNs, response->mStepNs,
                     response->mDelay);
            addValue(mComputed[{kStepOvershoot, key.mChannel}], spacingNs, response->mStepNs,
                     response->mOvershoot);
        } else {
            Matching& matching = mComputed[{kStepDelay, key.mChannel}];
            ++matching.mCounts.mExpected;
            ++matching.mCounts.mMissing;
            matching.mMissing.push_back(step.mBeginNs);
        }
    }
    return steps;
}

void ChannelSteps::addResponses(const std::vector<Step>& steps, const Matching& errors,
                                double limit, const SeriesKey& key)
{
    for (const Step& step : steps) {
        addValue(mComputed[key], errors.mSpacingNs, step.mBeginNs,
                 responseTime(errors.mPairs, step, limit));
    }
}

/** Steps sorted by time; simultaneous steps of several series become one. */
std::vector<Step> merged(std::vector<Step> steps)
{
    std::sort(steps.begin(), steps.end(),
              [](const Step& a, const Step& b) { return a.mBeginNs < b.mBeginNs; });
    const auto isSame = [](const Step& a, const Step& b) {
        return b.mBeginNs - a.mBeginNs < kSameStepNs;
    };
    steps.erase(std::unique(steps.begin(), steps.end(), isSame), steps.end());
    return steps;
}

void sortByTime(ComputedSeries& computed)
{
    for (auto& [key, matching] : computed) {
        std::stable_sort(matching.mPairs.begin(), matching.mPairs.end(),
                         [](const Pair& a, const Pair& b) { return a.mUtcNs < b.mUtcNs; });
    }
}
} // namespace

void addStepResponses(const ValueTable& expected, const ValueTable& measured,
                      const LimitTable& limits, ComputedSeries& computed)
{
    ChannelSteps channel(expected, measured, computed);
    std::map<std::string, std::vector<Step>> steps; // by channel
    std::vector<Step> all;
    for (const auto& [key, series] : expected.all()) {
        if (key.mQuantity == kMagnitude || key.mQuantity == kPositiveMagnitude ||
            isAngle(key.mQuantity)) {
            for (const Step& step : channel.add(key)) {
                steps[key.mChannel].push_back(step);
                all.push_back(step);
            }
        }
    }
    for (const auto& [name, found] : steps) {
        const auto limit = steadyLimit(limits, kTve);
        const auto errors = computed.find({kTve, name});
        if (limit && errors != computed.end()) {
            channel.addResponses(merged(found), errors->second, *limit,
                                 {std::string(kStepResponse) + "-tve", name});
        }
    }
    for (const auto& [quantity, response] :
         {std::pair(kPhasorHz, "-frequency"), {kRocof, "-rocof"}}) {
        const auto limit = steadyLimit(limits, quantity);
        const Series* const wanted = expected.find({quantity, ""});
        const Series* const found = measured.find({quantity, ""});
        if (limit && wanted != nullptr && found != nullptr) {
            const Matching errors = matchInTime(*wanted, *found, 0);
            channel.addResponses(merged(all), errors, *limit,
                                 {std::string(kStepResponse) + response, ""});
        }
    }
    sortByTime(computed);
}

} // namespace assess
