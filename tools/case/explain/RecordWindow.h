#pragma once

#include <string>
#include <vector>

#include "SampleRecord.h"
#include "base/InputFile.h"
#include "base/ProgressLine.h"
#include "waveform/RecordStamp.h"

namespace explain {

/**
 * A recording of the driver, seen through a window that moves over it once: the next record, some
 * behind it and some before it, in memory that does not depend on its length.
 */
class RecordWindow
{
public:
    /** Records that can be seen ahead and back, if the recording has them. */
    static constexpr size_t kAhead = 4096;
    static constexpr size_t kBack = 8192;

    /** @throws CaseError when the file cannot be read. */
    explicit RecordWindow(const std::string& path);

    const std::string& name() const { return mFile.name(); }

    /** Records from the next one on, at most kAhead; 0 at the end. */
    size_t ahead();

    /** Records before the next one that can be seen. */
    size_t back() const { return mNext; }

    /** The next record, or one ahead of or, with a negative offset, behind it. */
    const SampleRecord& operator[](std::ptrdiff_t offset) const
    {
        return mRecords[mNext + static_cast<size_t>(offset)];
    }

    void advance(size_t records = 1)
    {
        mNext += records;
        mPosition += records;
    }

    /** Place of the next record in the recording, from 0. */
    size_t position() const { return mPosition; }

    /** Bytes at the end that are no whole record. Known once ahead() was 0. */
    size_t restBytes() const { return mRestBytes; }

private:
    void refill();

    base::InputFile mFile;
    base::ProgressLine mProgress{"reading"};
    std::vector<SampleRecord> mRecords;
    size_t mNext = 0;
    size_t mPosition = 0;
    size_t mRestBytes = 0;
};

} // namespace explain
