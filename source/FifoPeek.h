#pragma once

#include <cstddef>

/**
 * Looks at what waits in a FIFO or a file without taking it, so that a line can be taken in one
 * read and what follows it stays there.
 *
 * Owns a pipe, through which a copy of a FIFO's bytes goes. Not copyable.
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
     * How many of the waiting bytes belong to the first line, its line end included; never more
     * than kMaxBytes. 1 when nothing waits, and for what cannot be looked at.
     */
    size_t bytesOfFirstLine(int descriptor) const;

private:
    int mPipe[2] = {-1, -1};
};
