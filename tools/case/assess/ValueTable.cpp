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
