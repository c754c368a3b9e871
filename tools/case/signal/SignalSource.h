#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** What is known of one analog channel before its samples are read. */
struct ChannelDescription
{
    int mNumber = 0;       ///< as the file counts; from 1 in recordings, 0 to 7 in value files
    std::string mName;     ///< UTF-8
    std::string mPhase;    ///< as the file gives it; may be empty
    std::string mUnit;     ///< as the file gives it; "" where it has none
    double mPrimary = 1.0; ///< ratio of the transformer, primary part; 0 where it is not known
    double mSecondary = 1.0;
    char mSide = ' '; ///< 'P' or 'S': which side the values belong to; ' ' where it is not told
};

/** What is known of a signal as a whole before its samples are read. */
struct SignalDescription
{
    std::string mFileName;
    std::string mStartTime;  ///< of the first sample, as text for the reader; may be empty
    double mNominalHz = 0.0; ///< 0 where the file does not tell
    size_t mSampleCount = 0; ///< 0 where it is known only at the end
    std::vector<ChannelDescription> mChannels;
};

/**
 * Consecutive samples of all channels, column by column: mValues[channel][i] was taken
 * mSeconds[i] after the first sample of the signal. All columns have the same length.
 */
struct SignalBlock
{
    size_t mFirst = 0;                        ///< place of the block's first sample, from 0
    std::vector<double> mSeconds;             ///< rises; the same within a recording's precision
    std::vector<std::vector<double>> mValues; ///< in the unit of the channel
    std::vector<double>
        mFrequency; ///< Hz a sample, where the file has it (value files); else empty

    size_t size() const { return mSeconds.size(); }
};

/**
 * A signal that is read once from its beginning to its end, block by block, in memory that does
 * not depend on its length: a value file, a recording of the driver, a COMTRADE recording or a
 * text file. The kinds differ in what they are made from; whoever measures, draws, exports or
 * resamples sees only this.
 *
 * Readers throw CaseError for what cannot be read.
 */
class SignalSource
{
public:
    SignalSource() = default;
    SignalSource(const SignalSource&) = delete;
    SignalSource& operator=(const SignalSource&) = delete;
    virtual ~SignalSource() = default;

    virtual const SignalDescription& description() const = 0;

    /**
     * Replaces the block by the next samples; its memory is used again.
     * @return false at the end, with an empty block.
     */
    virtual bool read(SignalBlock& block) = 0;

    /** How much has been read, 0 to 1, for a progress line. */
    virtual double progress() const = 0;
};
