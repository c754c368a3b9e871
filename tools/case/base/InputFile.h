#pragma once

#include <QFile>
#include <string>
#include <string_view>
#include <vector>

namespace base {

/**
 * The bytes of a regular file, or of a part of it, read ahead in blocks, so that the memory does
 * not grow with the size of the file. It deals with bytes and line ends only.
 *
 * Owns the open file. All errors are CaseErrors with the name of the file.
 */
class InputFile
{
public:
    /** A longer line is an error. */
    static constexpr size_t kMaxLineBytes = size_t{1} << 20U;

    /** Opens the whole file, which must be a regular one. */
    explicit InputFile(const std::string& path);

    const std::string& name() const { return mName; }

    /** Bytes of the whole file. */
    size_t size() const { return mSize; }

    /** Continues with the part from `begin` up to `end`, at most to the end of the file. */
    void setPart(size_t begin, size_t end);

    /** Continues there, up to the current end of the file, which may have grown. */
    void continueAt(size_t position);

    /** Position of the next byte in the file. */
    size_t position() const { return mBlockPosition + mNext; }

    /** Bytes that are left of the part. */
    size_t left() const { return mPartEnd - position(); }

    /**
     * The next bytes without taking them: as many as asked for, fewer only at the end of the
     * part. Valid until the next call of any operation.
     */
    std::string_view peek(size_t bytes);

    /** Takes bytes that were just peeked at. */
    void skip(size_t bytes) { mNext += bytes; }

    /**
     * Takes the next line, without its line end (LF or CRLF). Valid until the next call of any
     * operation.
     * @return false at the end of the part.
     */
    bool takeLine(std::string_view* line);

    /** Share of the part that has been taken, 0 to 1. */
    double progress() const;

private:
    std::string_view block() const { return {mBlock.data() + mNext, mBlockEnd - mNext}; }
    bool readMore(size_t wanted);

    std::string mName;
    QFile mFile;
    size_t mSize = 0;
    size_t mPartBegin = 0;
    size_t mPartEnd = 0;
    std::vector<char> mBlock;
    size_t mBlockPosition = 0; ///< of mBlock[0], in the file
    size_t mNext = 0;          ///< first byte in mBlock not yet taken
    size_t mBlockEnd = 0;      ///< end of the bytes read into mBlock
};

} // namespace base
