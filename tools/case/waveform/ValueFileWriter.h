#pragma once

#include <QtGlobal>
#include <array>
#include <string>
#include <vector>

#include "SampleRecord.h"
#include "base/ResultFile.h"

namespace waveform {

/** One line of a value file. */
struct ValueLine
{
    qint64 mNumber = 0;     ///< field 1, for the reader: which sample of its source this is
    double mSeconds = 0.0;  ///< field 2, for the reader: time in the source, written to the ns
    quint32 mAuxWord = 0;   ///< goes into the record
    quint32 mFlags = 0;     ///< goes into the record
    float mFrequency = 0.0; ///< Hz; written so that it reads back as the same number
    std::array<qint32, kChannelCount> mValues{};
};

/**
 * Writes an input value file line by line. Borrows the result file, which the caller commits.
 */
class ValueFileWriter
{
public:
    explicit ValueFileWriter(base::ResultFile& output) : mOutput(output) {}

    /** Each text becomes a comment line; line breaks in it become blanks. */
    void writeComments(const std::vector<std::string>& comments);

    void write(const ValueLine& line);

private:
    base::ResultFile& mOutput;
};

} // namespace waveform
