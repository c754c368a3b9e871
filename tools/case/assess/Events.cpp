#include "assess/Events.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <set>

#include "assess/QuantityNames.h"
#include "base/Numbers.h"

namespace assess {

namespace {
constexpr size_t kMaxCandidates = 32; ///< before and after an expected event

using Starts = std::vector<qint64>;

/** The events of one kind and channel in both tables. */
struct EventRows
{
    std::set<std::string> mQuantities; ///< quantities of the expected events
    std::set<qint64> mExpected;        ///< starts
    std::set<qint64> mMeasured;
    std::set<qint64> mDoubled; ///< measured ones with two rows of the same quantity
};

/** A possible pair of an expected and a measured event, by indices of starts. */
struct Candidate
{
    qint64 mDistanceNs;
    size_t mExpected;
    size_t mMeasured;
};

/** The time range in which measured events count; unlimited by default. */
struct JudgedTime
{
    qint64 mBeginNs = std::numeric_limits<qint64>::min();
    qint64 mEndNs = std::numeric_limits<qint64>::max();

    bool holds(qint64 ns) const { return ns > mBeginNs && ns < mEndNs; }
};

/** The range from the first to the last expected value; empty without values. */
JudgedTime timeOf(const ValueTable& expected)
{
    const std::optional<TimeRange> range = expected.range();
    return range ? JudgedTime{range->mBeginNs, range->mEndNs} : JudgedTime{0, 0};
}

void addMeasured(const std::vector<Sample>& samples, EventRows& rows)
{
    const Sample* previous = nullptr;
    for (const Sample& sample : samples) {
        rows.mMeasured.insert(sample.mUtcNs);
        if (previous != nullptr && previous->mUtcNs == sample.mUtcNs) {
            rows.mDoubled.insert(sample.mUtcNs);
        }
        previous = &sample;
    }
}

/** @param time measured events outside this range are left out */
std::map<SeriesKey, EventRows> collect(const ValueTable& expected, const ValueTable& measured,
                                       const JudgedTime& time)
{
    std::map<SeriesKey, EventRows> events; // by kind and channel
    for (const auto& [key, series] : expected.all()) {
        if (const auto kind = eventKindOf(key.mQuantity)) {
            EventRows& rows = events[{*kind, key.mChannel}];
            rows.mQuantities.insert(key.mQuantity);
            for (const Sample& sample : series.mSamples) {
                rows.mExpected.insert(sample.mUtcNs);
            }
        }
    }
    if (!areEventsExpected(expected)) {
        return {};
    }
    for (const auto& [key, series] : measured.all()) {
        const auto kind = eventKindOf(key.mQuantity);
        const auto isEarlier = [](const Sample& it, qint64 ns) { return it.mUtcNs < ns; };
        auto sample = std::lower_bound(series.mSamples.begin(), series.mSamples.end(),
                                       time.mBeginNs, isEarlier);
        const auto end =
            std::upper_bound(sample, series.mSamples.end(), time.mEndNs,
                             [](qint64 ns, const Sample& it) { return ns < it.mUtcNs; });
        if (kind && sample != end) {
            addMeasured({sample, end}, events[{*kind, key.mChannel}]);
        }
    }
    return events;
}

/** For each expected start the index of the measured one, if there is one. */
std::vector<std::optional<size_t>> matchStarts(const Starts& expected, const Starts& measured,
                                               qint64 toleranceNs)
{
    std::vector<Candidate> candidates;
    for (size_t i = 0; i < expected.size(); ++i) {
        const auto near = std::lower_bound(measured.begin(), measured.end(), expected[i]);
        const auto index = static_cast<size_t>(near - measured.begin());
        const size_t end = std::min(index + kMaxCandidates, measured.size());
        for (size_t j = index - std::min(index, kMaxCandidates); j < end; ++j) {
            const qint64 distance = std::abs(measured[j] - expected[i]);
            if (distance <= toleranceNs) {
                candidates.push_back({distance, i, j});
            }
        }
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.mDistanceNs < b.mDistanceNs; });
    std::vector<std::optional<size_t>> matches(expected.size());
    std::vector<bool> isTaken(measured.size());
    for (const Candidate& it : candidates) {
        if (!matches[it.mExpected] && !isTaken[it.mMeasured]) {
            matches[it.mExpected] = it.mMeasured;
            isTaken[it.mMeasured] = true;
        }
    }
    return matches;
}

std::optional<double> valueAt(const ValueTable& table, const SeriesKey& key, qint64 utcNs)
{
    const Series* const series = table.find(key);
    if (series == nullptr) {
        return std::nullopt;
    }
    const auto isEarlier = [](const Sample& sample, qint64 ns) { return sample.mUtcNs < ns; };
    const auto found =
        std::lower_bound(series->mSamples.begin(), series->mSamples.end(), utcNs, isEarlier);
    const bool isThere = found != series->mSamples.end() && found->mUtcNs == utcNs;
    return isThere ? std::optional(found->mValue) : std::nullopt;
}

/** Matches the events of one kind and channel. */
class EventMatcher
{
public:
    /** Measured events near expected ones count even outside the time range. */
    EventMatcher(const EventRows& rows, qint64 toleranceNs, const JudgedTime& time)
        : mExpected(rows.mExpected.begin(), rows.mExpected.end())
    {
        for (const qint64 start : rows.mMeasured) {
            const bool isNear = !mExpected.empty() && start >= mExpected.front() - toleranceNs &&
                                start <= mExpected.back() + toleranceNs;
            if (isNear || time.holds(start)) {
                mMeasured.push_back(start);
                if (rows.mDoubled.count(start) > 0) {
                    mDoubled.push_back(start);
                }
            }
        }
        mMatches = matchStarts(mExpected, mMeasured, toleranceNs);
    }

    Matching starts() const;
    Matching values(const ValueTable& expected, const ValueTable& measured,
                    const SeriesKey& key) const;

private:
    Starts mExpected;
    Starts mMeasured;
    Starts mDoubled;
    std::vector<std::optional<size_t>> mMatches;
};

Matching EventMatcher::starts() const
{
    Matching matching;
    matching.mCounts.mExpected = mExpected.size();
    matching.mCounts.mDoubled = mDoubled.size();
    matching.mDoubled = mDoubled;
    std::vector<bool> isTaken(mMeasured.size());
    for (size_t i = 0; i < mExpected.size(); ++i) {
        if (!mMatches[i]) {
            ++matching.mCounts.mMissing;
            matching.mMissing.push_back(mExpected[i]);
            continue;
        }
        isTaken[*mMatches[i]] = true;
        matching.mPairs.push_back({mExpected[i], 0.0,
                                   static_cast<double>(mMeasured[*mMatches[i]] - mExpected[i]) *
                                       base::kSecondsPerNanosecond});
    }
    for (size_t i = 0; i < mMeasured.size(); ++i) {
        if (!isTaken[i]) {
            ++matching.mCounts.mAdditional;
            matching.mAdditional.push_back(mMeasured[i]);
        }
    }
    return matching;
}

Matching EventMatcher::values(const ValueTable& expected, const ValueTable& measured,
                              const SeriesKey& key) const
{
    Matching matching;
    for (size_t i = 0; i < mExpected.size(); ++i) {
        const auto wanted = valueAt(expected, key, mExpected[i]);
        const auto found =
            mMatches[i] ? valueAt(measured, key, mMeasured[*mMatches[i]]) : std::nullopt;
        matching.mCounts.mExpected += wanted ? 1 : 0;
        if (wanted && found) {
            matching.mPairs.push_back({mExpected[i], *wanted, *found});
        } else if (wanted) {
            ++matching.mCounts.mMissing;
            matching.mMissing.push_back(mExpected[i]);
        }
    }
    return matching;
}
} // namespace

bool areEventsExpected(const ValueTable& expected)
{
    return std::any_of(expected.all().begin(), expected.all().end(), [](const auto& it) {
        const std::string& quantity = it.first.mQuantity;
        return eventKindOf(quantity) || quantity == kEventCount;
    });
}

void addEvents(const ValueTable& expected, const ValueTable& measured, qint64 toleranceNs,
               bool isPart, ComputedSeries& computed)
{
    const JudgedTime time = isPart ? timeOf(expected) : JudgedTime();
    // The plays of a night share one table of measured values, so each play uses its part only.
    const JudgedTime near =
        isPart ? JudgedTime{time.mBeginNs - toleranceNs, time.mEndNs + toleranceNs} : time;
    for (const auto& [key, rows] : collect(expected, measured, near)) {
        const EventMatcher matcher(rows, toleranceNs, time);
        computed[{startOf(key.mQuantity), key.mChannel}] = matcher.starts();
        for (const std::string& quantity : rows.mQuantities) {
            computed[{quantity, key.mChannel}] =
                matcher.values(expected, measured, {quantity, key.mChannel});
        }
    }
}

} // namespace assess
