#pragma once

#include <string>
#include <vector>

#include "SampleRecord.h"
#include "base/ProgressLine.h"

namespace explain {

/**
 * Reads the records of a recording as they arrive: of a file all that has been written so far, of
 * standard input or a named pipe everything until all writers have closed it.
 *
 * Owns the open file. All errors are CaseErrors with its name.
 */
class RecordingReader
{
public:
    /** @param path "-" is standard input */
    explicit RecordingReader(const std::string& path);
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;
    ~RecordingReader();

    const std::string& name() const { return mName; }

    /** Whether it is standard input or a pipe, whose records may arrive at any time. */
    bool isStream() const { return mIsStream; }

    /** Waits for the next whole records; none at the end. */
    const std::vector<SampleRecord>& next();

    /** Bytes of an incomplete record at the end. Known once next() has returned none. */
    size_t restBytes() const { return mRest.size(); }

    /** Whether no process has it open for writing. False for a stream. */
    bool isComplete() const;

private:
    size_t read(char* bytes, size_t count);

    std::string mName;
    int mFile;
    bool mIsStream = false;
    size_t mSize = 0; ///< of a file, when it was opened
    size_t mTaken = 0;
    base::ProgressLine mProgress{"reading"};
    std::vector<char> mRest; ///< of an incomplete record
    std::vector<SampleRecord> mRecords;
};

} // namespace explain
