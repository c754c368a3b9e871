#pragma once

#include <cstddef>
#include <string>

#include "FileDescriptor.h"

namespace sandbox {

class Console;

/**
 * A buffered output file that is only appended to, so that others may append to it as well: a flush
 * writes everything in one call. Without a path, it discards everything. A write that fails is
 * reported once and ends the output, because a file with a gap is worse than a short one.
 */
class OutputFile
{
public:
    /**
     * Creates or empties the file; with an empty path, everything is discarded. `console` is for
     * the report of a failure and is borrowed for the object's life. Throws a std::system_error
     * when the file cannot be opened.
     */
    OutputFile(const std::string& path, Console& console);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void write(const void* data, std::size_t size);
    void flush();

    /** Flushes and closes; what is written later is discarded. */
    void close();

    /** Whether a write failed; everything after it is lost. */
    bool hasFailed() const { return mHasFailed; }

private:
    void endWithError();

    std::string mPath;
    Console& mConsole;
    files::FileDescriptor mFile;
    std::string mBuffer;
    bool mHasFailed = false;
};

} // namespace sandbox
