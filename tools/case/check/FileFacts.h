#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "InputValues.h"

namespace check {

/** What the check must know of one value file; the samples themselves are not kept. */
struct FileFacts
{
    using Values = std::array<qint64, kChannelCount>;

    /** The first sample with a fault, and how many have it. */
    struct Finding
    {
        qint64 mFirst = -1; ///< index of the sample; -1 when there is none
        qint64 mCount = 0;
        float mFrequency = 0; ///< Hz, of the first
    };

    std::vector<std::string> mErrors; ///< the program's words, at most kMaxErrors of them
    qint64 mErrorCount = 0;
    bool mIsThere = true; ///< false when it could not be opened

    qint64 mSamples = 0;
    qint64 mNanoseconds = 0; ///< of one play, in the simulator's steps of whole ns
    float mLowestHz = 0;
    float mHighestHz = 0;
    Finding mUnplayable;   ///< frequencies outside the design, where a block begins
    Finding mInsideBlocks; ///< frequencies that change inside a block and have no effect

    Values mFirst{};
    Values mLast{};
    Values mLargestStep{}; ///< between neighbours in the file, each channel by itself

    static constexpr int kMaxErrors = 20;

    double seconds() const { return static_cast<double>(mNanoseconds) * 1e-9; }
};

/** Memory in bytes that the program on the 32-bit device takes for so many samples. */
qint64 bytesOn32Bits(qint64 samples);

/**
 * Reads a value file as the simulator does, with its classes and in its words, and continues after
 * a rejected line.
 */
FileFacts factsOf(const QString& fileName);

/** The line of the file, counted from 1, that holds the sample. Reads the file again. */
quint32 lineOfSample(const QString& fileName, qint64 sample);

} // namespace check
