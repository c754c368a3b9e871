#pragma once

#include <string>
#include <vector>

#include "InputValues.h"

namespace waveform {

/**
 * Reads a value file with the program's own class, some lines at a time: as fast as the program,
 * in its words where a line is wrong, and in memory that does not depend on the file's length.
 *
 * Owns the open file and the items of the last lines. The program's messages are collected while
 * open() and readSome() run: two objects may be used in turn.
 */
class ValueLines : private InputValues
{
public:
    ValueLines();

    /** Few enough lines that their items are still in the processor's cache when they are taken. */
    static constexpr int kMaxLines = 1024;

    /** @return false if it is not a regular file or cannot be opened; see errors(). */
    bool open(const QString& fileName);

    /**
     * Reads the next lines, at most kMaxLines, rejected ones included, and gives up the items of
     * those before.
     * @return false at the end of the file; also where it was removed, which is an error
     */
    bool readSome();

    /** What the program said in the last open() or readSome(). */
    const std::vector<std::string>& errors() const { return mErrors; }

    /** The next item that was read; null after the last. Valid until the next readSome(). */
    const InputValueItem* take() { return nextItem(); }

    /** How much of the file has been read, 0 to 1. */
    double progress() const;

private:
    std::vector<std::string> mErrors;
};

} // namespace waveform
