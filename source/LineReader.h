#pragma once

#include <QByteArray>

#include <cstddef>
#include <string_view>

/**
 * Returns the lines of an open file one by one, and reads ahead in blocks to avoid a system call
 * per line. It deals with bytes and line ends (0x0A) only.
 *
 * Borrows the descriptor, which must stay open while lines are taken, and owns its buffer, which
 * grows to the longest line.
 */
class LineReader
{
public:
    static constexpr size_t kReadableAfterLines = 8;

    /** Starts at the descriptor's current position; forgets what was read and any failure. */
    void start(int descriptor);

    /** Releases the buffer; hasLine() is false from then on. */
    void stop();

    /**
     * True if a line can be taken: a whole one, or the bytes after the last line end. False at the
     * end of the file (a read that returns nothing) and after a failed read; the bytes of a line
     * that a failed read left unfinished are never returned.
     */
    bool hasLine() { return mBegin < mWholeEnd || findLine(); }

    /**
     * Lets hasLine() continue at the end of the file, which may have grown. A failed read remains
     * the end.
     */
    void lookAgain() { mAtEnd = mFailed; }

    /**
     * Takes the next line, without its line end. The bytes stay valid until the next call of any
     * operation. Requires: hasLine() was just true.
     */
    std::string_view takeLine();

    /**
     * The whole lines that were read and not yet taken, with their line ends; may be empty, also
     * when hasLine() is true. kReadableAfterLines more bytes can be read after them.
     */
    std::string_view wholeLines() const
    {
        return {mBuffer.constData() + mBegin, mWholeEnd > mBegin ? mWholeEnd - mBegin : 0};
    }

    /** Takes that many bytes of wholeLines(), up to and including a line end. */
    void drop(size_t bytes) { mBegin += bytes; }

    /** The errno of the read that failed, 0 if none did; each failure is returned once. */
    int takeError();

private:
    bool findLine();
    bool fill();
    size_t bufferSize() const { return static_cast<size_t>(mBuffer.size()); }

    int mDescriptor = -1;
    int mError = 0;
    bool mAtEnd = true;
    bool mFailed = true;  ///< or nothing was started
    QByteArray mBuffer;   ///< never cleared: a new page of it costs more than a line
    size_t mBegin = 0;    ///< first byte not yet taken
    size_t mWholeEnd = 0; ///< after the last line end that was read
    size_t mEnd = 0;      ///< end of the bytes read
};
