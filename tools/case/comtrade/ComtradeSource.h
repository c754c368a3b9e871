#pragma once

#include <memory>
#include <string>

#include "base/InputFile.h"
#include "base/Remarks.h"
#include "comtrade/ComtradeClock.h"
#include "comtrade/ComtradeHeader.h"
#include "comtrade/ComtradeRecords.h"
#include "comtrade/StatusTracker.h"
#include "waveform/SignalSource.h"

namespace comtrade {

/** The parts of a recording. */
struct ComtradeParts
{
    std::string mName; ///< of the recording, for the user: the given file
    ComtradeHeader mHeader;
    base::Remarks mRemarks;                 ///< so far
    std::unique_ptr<base::InputFile> mData; ///< at the beginning of the data part
    size_t mFirstDataLine = 1;
};

/**
 * A COMTRADE recording: values in the units of its channels. For a missing value the one before is
 * held (0 at the beginning).
 */
class ComtradeSource : public waveform::SignalSource
{
public:
    explicit ComtradeSource(ComtradeParts parts);

    const waveform::SignalDescription& description() const override { return mDescription; }
    bool read(waveform::SignalBlock& block) override;
    double progress() const override { return mParts.mData->progress(); }

private:
    void describe();
    void remarkOnChannels();
    void scale(size_t channel, waveform::SignalBlock* block);
    void checkNumbers();
    void finish();

    ComtradeParts mParts;
    waveform::SignalDescription mDescription;
    std::unique_ptr<ComtradeRecords> mRecords;
    ComtradeClock mClock;
    StatusTracker mStates;
    size_t mBlockSamples;
    ComtradeBlock mBlock;            ///< kept for its memory
    std::vector<double> mLastValues; ///< of each channel
    qint64 mLastNumber = 0;          ///< of a sample
    size_t mJumps = 0;               ///< of the samples' numbers
    size_t mDisorders = 0;           ///< sample numbers that repeat or fall
    bool mIsFinished = false;
};

} // namespace comtrade
