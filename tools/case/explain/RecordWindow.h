#pragma once

#include <vector>

#include "explain/SampleStore.h"
#include "waveform/RecordStamp.h"

namespace explain {

/**
 * A window that moves once over a recording of the driver: the records that have arrived and are
 * not judged yet, and some before them.
 */
class RecordWindow
{
public:
    /** Max number of accessible records ahead and back. */
    static constexpr size_t kAhead = 4096;
    static constexpr size_t kBack = 8192;

    void append(const SampleRecord* records, size_t count);

    /** Records from the next one on. */
    size_t arrived() const { return mRecords.size() - mNext; }

    /** The same, but at most kAhead. */
    size_t ahead() const { return arrived() < kAhead ? arrived() : kAhead; }

    /** Number of accessible records before the next one. */
    size_t back() const { return mNext; }

    /** The next record, or one ahead of or, with a negative offset, behind it. */
    const SampleRecord& operator[](std::ptrdiff_t offset) const
    {
        return mRecords[mNext + static_cast<size_t>(offset)];
    }
    const SampleRecord& operator[](size_t offset) const { return mRecords[mNext + offset]; }
    const SampleRecord& next() const { return mRecords[mNext]; }

    /** The contents of the next records, kProofRecords at most. */
    std::vector<SampleContent> proof(size_t offset) const;

    void advance(size_t records = 1)
    {
        mNext += records;
        mPosition += records;
    }

    /** Index of the next record in the recording, from 0. */
    size_t position() const { return mPosition; }

private:
    std::vector<SampleRecord> mRecords;
    size_t mNext = 0;
    size_t mPosition = 0;
};

} // namespace explain
