#pragma once

#include <cstddef>

/**
 * Reads the next bytes of a FIFO or a file without taking them, so that a line can be taken in one
 * read and the bytes after it stay there.
 *
 * Owns a pipe for a copy of a FIFO's bytes. Not copyable.
 */
class FifoPeek
{
public:
    /** The maximum that one call looks at, in bytes. */
    static constexpr size_t kMaxBytes = 4096;

    FifoPeek();
    FifoPeek(const FifoPeek&) = delete;
    FifoPeek& operator=(const FifoPeek&) = delete;
    ~FifoPeek();

    /**
     * Number of waiting bytes of the first line, including its line end; at most kMaxBytes. 1 if
     * nothing waits, and if the bytes cannot be read in advance.
     */
    size_t bytesOfFirstLine(int descriptor) const;

private:
    int mPipe[2] = {-1, -1};
};
