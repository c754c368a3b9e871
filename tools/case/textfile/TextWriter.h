#pragma once

#include "base/ResultFile.h"
#include "waveform/SignalSource.h"

namespace textfile {

/**
 * Writes a text file with a heading: a time column in seconds, then one column per channel with its
 * unit. Borrows the result file, which the caller commits.
 */
class TextWriter
{
public:
    /** A column of values: the number in a block times the factor, in the unit. */
    struct Column
    {
        std::string mName;
        std::string mUnit;
        double mFactor;
    };

    /** Writes the heading. */
    TextWriter(std::vector<Column> columns, base::ResultFile& output);

    /** Requires: the block's channels are the columns. */
    void write(const waveform::SignalBlock& block);

private:
    std::vector<Column> mColumns;
    base::ResultFile& mOutput;
};

} // namespace textfile
