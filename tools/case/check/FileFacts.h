#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "InputValues.h"

namespace check {

/** The facts about one value file that the check needs; the samples are not kept. */
struct FileFacts
{
    using Values = std::array<qint64, kChannelCount>;

    /** The first sample with a fault, and the number of samples with it. */
    struct Finding
    {
        qint64 mFirst = -1; ///< index of the sample; -1 for none
        qint64 mCount = 0;
        float mFrequency = 0; ///< Hz, of the first
    };

    std::vector<std::string> mErrors; ///< messages of the program, at most kMaxErrors
    qint64 mErrorCount = 0;
    bool mIsThere = true; ///< false if it could not be opened

    qint64 mSamples = 0;
    qint64 mNanoseconds = 0; ///< of one play, in the simulator's steps of whole ns
    float mLowestHz = 0;
    float mHighestHz = 0;
    Finding mUnplayable;   ///< unplayable frequencies at the beginning of a block
    Finding mInsideBlocks; ///< frequencies that change inside a block and have no effect

    Values mFirst{};
    Values mLast{};
    Values mLargestStep{}; ///< between adjacent samples, for each channel

    static constexpr int kMaxErrors = 20;

    double seconds() const { return static_cast<double>(mNanoseconds) * 1e-9; }
};

/** Memory in bytes that the program on the 32-bit device needs for these samples. */
qint64 bytesOn32Bits(qint64 samples);

/**
 * Reads a value file like the simulator, with its classes and messages, and continues after a
 * rejected line.
 */
FileFacts factsOf(const QString& fileName);

/** The line of the sample in the file, counted from 1. Reads the file again. */
quint32 lineOfSample(const QString& fileName, qint64 sample);

} // namespace check
