#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "waveform/ImportMark.h"

namespace waveform {

/** An analog channel, as known before its samples are read. */
struct ChannelDescription
{
    int mNumber = 0;        ///< as in the file; from 1 in recordings, 0 to 7 in value files
    std::string mName;      ///< UTF-8
    std::string mPhase;     ///< as in the file; may be empty
    std::string mComponent; ///< the monitored circuit component; may be empty
    std::string mUnit;      ///< as in the file; "" if it has none
    double mPrimary = 1.0;  ///< ratio of the transformer, primary part; 0 if unknown
    double mSecondary = 1.0;
    char mSide = ' '; ///< 'P' or 'S': side of the values; ' ' if the file does not give it
    /** Delay of each value after the time of its sample, in µs. */
    double mSkewMicroseconds = 0.0;
    /**
     * Number of missing values, for which the value before is held (0 at the beginning). Counted
     * while the samples are read.
     */
    size_t mMissing = 0;
    double mFirstMissing = 0.0;  ///< time of the first of them in s, as in the block
    bool mBeginsMissing = false; ///< the first sample has no number
};

/** A status channel, with the changes found while the samples are read. */
struct StatusChannel
{
    struct Change
    {
        double mSeconds; ///< as in the block
        bool mState;     ///< from then on
    };

    int mNumber = 0;
    std::string mName;            ///< UTF-8
    bool mFirstState = false;     ///< at the first sample
    size_t mChangeCount = 0;      ///< all of them
    std::vector<Change> mChanges; ///< the first ones that are kept
};

/** A run of samples with one rate, which holds from each of them to the next. */
struct SampleRate
{
    double mHz = 0.0;
    size_t mEnd = 0; ///< index after its last sample, as the file announces it
};

/** A signal, as known before its samples are read. */
struct SignalDescription
{
    std::string mFileName;
    std::string mFormat;  ///< "COMTRADE 1999, BINARY", "value file", ...
    std::string mStation; ///< UTF-8; may be empty, as the two below
    std::string mDevice;
    std::string mStartTime; ///< of the first sample, as text for the reader
    std::string mTriggerTime;
    std::optional<ImportMark> mImport; ///< of a value file made from a recording
    double mNominalHz = 0.0;           ///< 0 if the file has none
    size_t mSampleCount = 0;           ///< 0 if it is known only at the end
    /** s, as in the block: where a stamp of the driver first falls; found during reading. */
    std::optional<double> mFirstFall;
    std::vector<SampleRate> mRates; ///< empty if only time stamps give the times
    std::vector<ChannelDescription> mChannels;
    std::vector<StatusChannel> mStatusChannels; ///< all; their states are known at the end
    /**
     * Remarks on oddities of the file and how they were handled, for the user; more may be added
     * while the samples are read.
     */
    std::vector<std::string> mRemarks;
};

/**
 * Consecutive samples of all channels, column by column: mValues[channel][i] was taken
 * mSeconds[i] after the first sample of the signal. All columns have the same length.
 */
struct SignalBlock
{
    size_t mFirst = 0;                        ///< index of the block's first sample in the signal
    std::vector<double> mSeconds;             ///< rises; the same within a recording's precision
    std::vector<std::vector<double>> mValues; ///< in the unit of the channel
    std::vector<double> mFrequency;           ///< Hz per sample, of value files; otherwise empty

    size_t size() const { return mSeconds.size(); }

    /** Gives every column this number of samples with undefined values. */
    void resize(size_t channels, size_t samples)
    {
        mSeconds.resize(samples);
        mValues.resize(channels);
        for (std::vector<double>& column : mValues) {
            column.resize(samples);
        }
    }
};

/**
 * A signal that is read once from its beginning to its end, block by block, in constant memory: a
 * value file, a recording of the driver, a COMTRADE recording or a text file. Measuring, drawing,
 * exporting and resampling only see this interface.
 *
 * Readers throw CaseError if something cannot be read.
 */
class SignalSource
{
public:
    SignalSource() = default;
    SignalSource(const SignalSource&) = delete;
    SignalSource& operator=(const SignalSource&) = delete;
    virtual ~SignalSource() = default;

    /** The reference stays valid; missing values, states and remarks are updated by read(). */
    virtual const SignalDescription& description() const = 0;

    /**
     * Replaces the block by the next samples and reuses its memory.
     * @return false at the end, with an empty block.
     */
    virtual bool read(SignalBlock& block) = 0;

    /** Part that has been read, 0 to 1, for a progress line. */
    virtual double progress() const = 0;
};

} // namespace waveform
