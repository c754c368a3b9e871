#include "assess/ValueTable.h"

#include <algorithm>

namespace assess {

void Series::add(const Sample& sample)
{
    if (!mSamples.empty() && sample.mUtcNs < mSamples.back().mUtcNs) {
        ++mOutOfOrder;
    }
    mSamples.push_back(sample);
}

const Series* ValueTable::find(const SeriesKey& key) const
{
    const auto found = mSeries.find(key);
    return found == mSeries.end() ? nullptr : &found->second;
}

std::optional<TimeRange> ValueTable::range() const
{
    std::optional<TimeRange> range;
    for (const auto& [key, values] : mSeries) {
        if (!values.mSamples.empty()) {
            const qint64 first = values.mSamples.front().mUtcNs;
            const qint64 last = values.mSamples.back().mUtcNs;
            range = range
                        ? TimeRange{std::min(range->mBeginNs, first), std::max(range->mEndNs, last)}
                        : TimeRange{first, last};
        }
    }
    return range;
}

void ValueTable::sort()
{
    const auto isEarlier = [](const Sample& a, const Sample& b) { return a.mUtcNs < b.mUtcNs; };
    for (auto& [key, sorted] : mSeries) {
        if (sorted.mOutOfOrder > 0) {
            std::stable_sort(sorted.mSamples.begin(), sorted.mSamples.end(), isEarlier);
        }
    }
}

} // namespace assess
