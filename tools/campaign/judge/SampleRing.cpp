#include "judge/SampleRing.h"

#include <algorithm>

#include "waveform/RecordStamp.h"

namespace judge {

void SampleRing::add(const SampleRecord* records, size_t count)
{
    for (const SampleRecord* it = records; it != records + count; ++it, ++mArrived) {
        if (mRecords.size() < kRecords) {
            mRecords.push_back(*it);
        } else {
            mRecords[mArrived % kRecords] = *it;
        }
    }
}

std::optional<qint64> SampleRing::stampNsAt(size_t record) const
{
    if (record < first() || record >= mArrived) {
        return std::nullopt;
    }
    return waveform::stampNsOf(at(record));
}

std::vector<SampleRecord> SampleRing::part(size_t begin, size_t end) const
{
    std::vector<SampleRecord> records;
    for (size_t it = std::max(begin, first()); it < std::min(end, mArrived); ++it) {
        records.push_back(at(it));
    }
    return records;
}

} // namespace judge
