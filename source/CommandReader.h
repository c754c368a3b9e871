#pragma once

#include <QByteArray>

#include "FifoPeek.h"

class VxDevice;

/**
 * Assembles the lines that the operator writes into the control FIFO: keeps the part of a line that
 * has arrived until its end comes, and drops a line that is too long. Does not interpret the lines.
 *
 * Never waits and logs nothing. Borrows the device for each call. Not copyable.
 */
class CommandReader
{
public:
    /** The longest line in bytes, without its line end. */
    static constexpr int kMaxLineBytes = 64 * 1024;

    enum class Result
    {
        Nothing, ///< no whole line has arrived
        Line,    ///< a line was taken
        TooLong  ///< a line exceeds the limit; returned once, its rest is dropped as it comes
    };

    /**
     * Takes at most one line. Bytes after its line end stay in the device for the next call.
     *
     * @param line gets a taken line with its line end; at the end of a regular file the rest of the
     * file, which may be empty
     */
    Result take(VxDevice& device, QByteArray* line);

    /** True when the last call took something from the device. */
    bool tookBytes() const { return mTookBytes; }

private:
    Result append(const char* bytes, int count);

    FifoPeek mPeek;
    QByteArray mPart;           ///< of a line that has not ended
    bool mDroppingLine = false; ///< until the end of a line that was too long
    bool mTookBytes = false;
};
