#include "assess/LostValues.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <iterator>
#include <map>

#include "assess/QuantityNames.h"
#include "measure/UtcText.h"

namespace assess {

namespace {
constexpr size_t kMaxSentences = 20;
constexpr size_t kMaxNamed = 4;
constexpr qint64 kMaxRunStepNs = 1'000'000'000; ///< max time between the times of a run

using Names = std::vector<std::string>;

/** Names of the series concerned, by time. */
using ByTime = std::map<qint64, Names>;

std::string utcTextOf(qint64 ns)
{
    return std::string(measure::UtcText().of(ns));
}

std::string listed(const Names& names)
{
    if (names.size() <= kMaxNamed) {
        return fmt::format("{}", fmt::join(names, ", "));
    }
    const auto end = names.begin() + kMaxNamed;
    return fmt::format("{} and {} more", fmt::join(names.begin(), end, ", "),
                       names.size() - kMaxNamed);
}

/** Adds one sentence for consecutive times at which the same series are concerned. */
void addRuns(const std::string& what, const ByTime& times, Names& sentences)
{
    for (auto begin = times.begin(); begin != times.end();) {
        auto end = std::next(begin);
        size_t count = 1;
        qint64 last = begin->first;
        const qint64 firstStep = end == times.end() ? 0 : end->first - last;
        while (end != times.end() && end->second == begin->second &&
               end->first - last <= firstStep + firstStep / 2 && firstStep < kMaxRunStepNs) {
            last = end->first;
            ++end;
            ++count;
        }
        sentences.push_back(
            count == 1
                ? fmt::format("{} at {}: {}", what, utcTextOf(begin->first), listed(begin->second))
                : fmt::format("{} {} times from {} to {}: {}", what, count, utcTextOf(begin->first),
                              utcTextOf(last), listed(begin->second)));
        begin = end;
    }
}

void addTimes(const std::vector<qint64>& times, const std::string& name, ByTime& all)
{
    for (const qint64 ns : times) {
        all[ns].push_back(name);
    }
}

/** Events are named by kind and channel: "dip UA". */
std::string eventName(const SeriesKey& key)
{
    return nameOf(SeriesKey{*eventKindOf(key.mQuantity), key.mChannel});
}
} // namespace

std::vector<std::string> lostValues(const std::vector<SeriesResult>& series)
{
    ByTime missing;
    ByTime additional;
    ByTime doubled;
    ByTime missingEvents;
    ByTime additionalEvents;
    ByTime doubledEvents;
    Names sentences;
    for (const SeriesResult& it : series) {
        const auto kind = eventKindOf(it.mKey.mQuantity);
        if (kind && it.mKey.mQuantity == startOf(*kind)) {
            addTimes(it.mMissing, eventName(it.mKey), missingEvents);
            addTimes(it.mAdditional, eventName(it.mKey), additionalEvents);
            addTimes(it.mDoubled, eventName(it.mKey), doubledEvents);
        } else if (!kind && it.mCompared > 0 && !isComputed(it.mKey.mQuantity)) {
            addTimes(it.mMissing, nameOf(it.mKey), missing);
            addTimes(it.mAdditional, nameOf(it.mKey), additional);
            addTimes(it.mDoubled, nameOf(it.mKey), doubled);
        }
        if (it.mCounts.mOutOfOrder > 0) {
            sentences.push_back(fmt::format("{}: {} rows are earlier than a row before them",
                                            nameOf(it.mKey), it.mCounts.mOutOfOrder));
        }
    }
    addRuns("missing event", missingEvents, sentences);
    addRuns("additional event", additionalEvents, sentences);
    addRuns("doubled event", doubledEvents, sentences);
    addRuns("lost", missing, sentences);
    addRuns("additional", additional, sentences);
    addRuns("doubled", doubled, sentences);
    if (sentences.size() > kMaxSentences) {
        const size_t more = sentences.size() - kMaxSentences;
        sentences.resize(kMaxSentences);
        sentences.push_back(fmt::format("and {} more like this", more));
    }
    return sentences;
}

} // namespace assess
