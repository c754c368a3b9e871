#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace sandbox {

class Console;

/**
 * A file that is only appended to, buffered. One that nobody asked for (no path) swallows
 * everything. A write that fails is reported once and ends the output, because a file with a hole
 * in it would be worse than a short one.
 */
class OutputFile
{
public:
    /**
     * Creates or empties the file; an empty path gives one that swallows everything. `console`
     * takes the report of a failure and is borrowed for the object's life. Throws a
     * std::system_error when the file cannot be opened.
     */
    OutputFile(const std::string& path, Console& console);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /** Whether what is written goes anywhere. */
    bool isOpen() const { return mFile != nullptr; }

    void write(const void* data, std::size_t size);
    void flush();

    /** Whether a write failed; what came after it is lost. */
    bool hasFailed() const { return mHasFailed; }

private:
    struct Closer
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void endWithError();

    std::string mPath;
    Console& mConsole;
    std::unique_ptr<std::FILE, Closer> mFile;
    bool mHasFailed = false;
};

} // namespace sandbox
