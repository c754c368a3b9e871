#include "assess/Situations.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "assess/QuantityNames.h"
#include "assess/Steps.h"
#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
constexpr qint64 kStateWindowNs = waveform::kSecondInNs / 4; ///< on either side
constexpr double kSteadyShare = 0.01;                        ///< of the magnitude
constexpr double kSteadyRocof = 0.05;                        ///< Hz/s
constexpr double kMaxEventSeconds = 1e8;
constexpr double kConstantRocof = 0.1; ///< Hz/s; max variation within a ramp

const std::vector<Sample>* samplesOf(const ValueTable& table, const SeriesKey& key)
{
    const Series* const series = table.find(key);
    return series == nullptr || series->mSamples.empty() ? nullptr : &series->mSamples;
}

/** The smallest and the largest value in a time range. */
struct Extremes
{
    double mMin = 0.0;
    double mMax = 0.0;
};

Extremes extremesOf(const std::vector<Sample>& samples, qint64 beginNs, qint64 endNs)
{
    const auto isEarlier = [](const Sample& sample, qint64 ns) { return sample.mUtcNs < ns; };
    auto it = std::lower_bound(samples.begin(), samples.end(), beginNs, isEarlier);
    if (it == samples.end() || it->mUtcNs > endNs) {
        return {};
    }
    Extremes extremes{it->mValue, it->mValue};
    for (; it != samples.end() && it->mUtcNs <= endNs; ++it) {
        extremes.mMin = std::min(extremes.mMin, it->mValue);
        extremes.mMax = std::max(extremes.mMax, it->mValue);
    }
    return extremes;
}

/** An event without a duration lasts beyond the end of the signal. */
qint64 durationNs(const std::vector<Sample>* durations, qint64 beginNs)
{
    double seconds = kMaxEventSeconds;
    if (durations != nullptr) {
        const auto isEarlier = [](const Sample& it, qint64 ns) { return it.mUtcNs < ns; };
        const auto found =
            std::lower_bound(durations->begin(), durations->end(), beginNs, isEarlier);
        if (found != durations->end() && found->mUtcNs == beginNs) {
            seconds = std::clamp(found->mValue, 0.0, kMaxEventSeconds);
        }
    }
    return std::llround(seconds * base::kNanosecondsPerSecond);
}

/** A magnitude that represents all phases. */
const std::vector<Sample>* magnitudesOf(const ValueTable& expected)
{
    for (const SeriesKey& key : {SeriesKey{kPositiveMagnitude, "U"}, SeriesKey{kMagnitude, "UA"},
                                 SeriesKey{kPositiveMagnitude, "I"}, SeriesKey{kMagnitude, "IA"}}) {
        if (const auto* const samples = samplesOf(expected, key)) {
            return samples;
        }
    }
    return nullptr;
}

SignalState stateOf(const Extremes& magnitude, const Extremes& rocof)
{
    if (magnitude.mMax - magnitude.mMin > kSteadyShare * std::abs(magnitude.mMax)) {
        return SignalState::Varying;
    }
    if (std::max(std::abs(rocof.mMin), std::abs(rocof.mMax)) <= kSteadyRocof) {
        return SignalState::Steady;
    }
    return rocof.mMax - rocof.mMin <= kConstantRocof ? SignalState::Ramp : SignalState::Varying;
}
} // namespace

Situations::Situations(const ValueTable& expected)
{
    addEvents(expected);
    addSteps(expected);
    join();
    findStates(expected);
}

void Situations::addEvents(const ValueTable& expected)
{
    for (const auto& [key, series] : expected.all()) {
        const auto kind = eventKindOf(key.mQuantity);
        if (!kind) {
            continue;
        }
        const auto* const durations = samplesOf(expected, {*kind + "-duration", key.mChannel});
        for (const Sample& event : series.mSamples) {
            mIntervals.push_back(
                {event.mUtcNs, event.mUtcNs + durationNs(durations, event.mUtcNs)});
        }
    }
}

void Situations::addSteps(const ValueTable& expected)
{
    for (const auto& [key, series] : expected.all()) {
        const bool isMagnitude = key.mQuantity == kMagnitude ||
                                 key.mQuantity == kPositiveMagnitude || key.mQuantity == "rms-half";
        if (!isMagnitude && !isAngle(key.mQuantity)) {
            continue;
        }
        for (const Step& step : findSteps(series.mSamples, isAngle(key.mQuantity))) {
            mSteps.push_back({step.mBeginNs, step.mEndNs});
        }
    }
    std::sort(mSteps.begin(), mSteps.end(), [](const Interval& a, const Interval& b) {
        return std::tie(a.mEndNs, a.mBeginNs) < std::tie(b.mEndNs, b.mBeginNs);
    });
    mIntervals.insert(mIntervals.end(), mSteps.begin(), mSteps.end());
}

/** Merges overlapping intervals; their ends remain edges. */
void Situations::join()
{
    for (const Interval& it : mIntervals) {
        mEdges.push_back(it.mBeginNs);
        mEdges.push_back(it.mEndNs);
    }
    std::sort(mEdges.begin(), mEdges.end());
    std::sort(mIntervals.begin(), mIntervals.end(),
              [](const Interval& a, const Interval& b) { return a.mBeginNs < b.mBeginNs; });
    std::vector<Interval> joined;
    for (const Interval& it : mIntervals) {
        if (!joined.empty() && it.mBeginNs <= joined.back().mEndNs) {
            joined.back().mEndNs = std::max(joined.back().mEndNs, it.mEndNs);
        } else {
            joined.push_back(it);
        }
    }
    mIntervals = std::move(joined);
}

/** The window around a time, cut at the nearest steps. */
Situations::Interval Situations::windowAround(qint64 utcNs) const
{
    const auto next = std::partition_point(
        mSteps.begin(), mSteps.end(), [utcNs](const Interval& it) { return it.mEndNs <= utcNs; });
    Interval window{utcNs - kStateWindowNs, utcNs + kStateWindowNs};
    if (next != mSteps.begin()) {
        window.mBeginNs = std::max(window.mBeginNs, next[-1].mEndNs);
    }
    if (next != mSteps.end()) {
        window.mEndNs = std::min(window.mEndNs, std::max(utcNs, next->mBeginNs));
    }
    return window;
}

void Situations::findStates(const ValueTable& expected)
{
    const auto* const magnitudes = magnitudesOf(expected);
    const auto* const rocofs = samplesOf(expected, {kRocof, ""});
    const auto* const times = magnitudes != nullptr ? magnitudes : rocofs;
    if (times == nullptr) {
        return;
    }
    for (const Sample& sample : *times) {
        const Interval window = windowAround(sample.mUtcNs);
        const auto extremes = [&window](const std::vector<Sample>* samples) {
            return samples == nullptr ? Extremes()
                                      : extremesOf(*samples, window.mBeginNs, window.mEndNs);
        };
        const SignalState state = stateOf(extremes(magnitudes), extremes(rocofs));
        if (mStates.empty() || mStates.back().mState != state) {
            mStates.push_back({sample.mUtcNs, state});
        }
    }
}

bool Situations::overlapsEvent(qint64 beginNs, qint64 endNs) const
{
    const auto found =
        std::partition_point(mIntervals.begin(), mIntervals.end(),
                             [beginNs](const Interval& it) { return it.mEndNs < beginNs; });
    return found != mIntervals.end() && found->mBeginNs <= endNs;
}

bool Situations::isNearEdge(qint64 utcNs, qint64 distanceNs) const
{
    const auto found = std::lower_bound(mEdges.begin(), mEdges.end(), utcNs - distanceNs);
    return found != mEdges.end() && *found <= utcNs + distanceNs;
}

SignalState Situations::stateAt(qint64 utcNs) const
{
    const auto after =
        std::upper_bound(mStates.begin(), mStates.end(), utcNs,
                         [](qint64 ns, const StateSpan& it) { return ns < it.mBeginNs; });
    return after == mStates.begin() ? SignalState::Steady : after[-1].mState;
}

} // namespace assess
