#pragma once

#include <string>
#include <vector>

#include "SampleRecord.h"
#include "base/ProgressLine.h"

namespace explain {

/**
 * Reads the records of a recording as they come: of a file what has been written so far, of
 * standard input or a named pipe all until its writers have closed it.
 *
 * Owns the open file. Throws CaseError with its name for whatever fails.
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

    /** Whether it is standard input or a pipe, whose records may take as long as they like. */
    bool isStream() const { return mIsStream; }

    /** The next whole records that are there, once there are any; none at the end. */
    const std::vector<SampleRecord>& next();

    /** Bytes at the end that are no whole record. Known once next() gave none. */
    size_t restBytes() const { return mRest.size(); }

    /** Whether nobody can be writing it any more. A stream's writer may have more to send. */
    bool isComplete() const;

private:
    size_t read(char* bytes, size_t count);

    std::string mName;
    int mFile;
    bool mIsStream = false;
    size_t mSize = 0; ///< of a file, when it was opened
    size_t mTaken = 0;
    base::ProgressLine mProgress{"reading"};
    std::vector<char> mRest; ///< of a record that has not arrived as a whole
    std::vector<SampleRecord> mRecords;
};

} // namespace explain
