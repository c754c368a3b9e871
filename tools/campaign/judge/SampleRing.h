#pragma once

#include <QtGlobal>
#include <optional>
#include <vector>

#include "SampleRecord.h"

namespace judge {

/** The latest records of a run of the program. Records are numbered from 0 in the run. */
class SampleRing
{
public:
    /** 7 s at 50 Hz; 6 MB. */
    static constexpr size_t kRecords = size_t{1} << 17U;

    void add(const SampleRecord* records, size_t count);

    /** Records of the run so far. */
    size_t arrived() const { return mArrived; }

    /** Time stamp of a record; nothing if it is no longer kept or has not arrived. */
    std::optional<qint64> stampNsAt(size_t record) const;

    /** The kept records from `begin` up to, but not including, `end`. */
    std::vector<SampleRecord> part(size_t begin, size_t end) const;

private:
    const SampleRecord& at(size_t record) const { return mRecords[record % kRecords]; }
    size_t first() const { return mArrived - mRecords.size(); }

    std::vector<SampleRecord> mRecords; ///< grows up to kRecords, then the oldest are replaced
    size_t mArrived = 0;
};

} // namespace judge
