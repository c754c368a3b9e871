#pragma once

#include <string>

#include "base/Remarks.h"
#include "comtrade/ComtradeHeader.h"
#include "comtrade/ComtradeRecords.h"
#include "waveform/RisingTime.h"

namespace comtrade {

/**
 * The time of each sample of a recording: by its rates, each of which holds for a range of samples,
 * or else by its time stamps. If a rate and the stamps differ, the rate is used.
 */
class ComtradeClock
{
public:
    /** Borrows the header. */
    explicit ComtradeClock(const ComtradeHeader& header) : mHeader(header) {}

    /**
     * Fills in the times of a block, in s from the first sample of the recording.
     * @return false if neither a rate nor a stamp gives the start of the recording
     */
    bool stamp(const ComtradeBlock& block, double* seconds);

    /** Whether there is no rate and the stamps are not a time: none has risen, or too many fall. */
    bool hasNoTime() const;

    /** Samples so far. */
    size_t samples() const { return mSamples; }

    /** Adds remarks on oddities; to be called at the end. */
    void remarkOn(base::Remarks* remarks) const;

private:
    double nextByRate();
    bool nextByStamp(qint64 stamp, double* seconds);
    void compare(qint64 stamp, double seconds);

    const ComtradeHeader& mHeader;
    size_t mSamples = 0;
    size_t mRate = 0;                      ///< index of the rate in force
    size_t mRateBegin = 0;                 ///< index of its first sample
    double mRateSeconds = 0.0;             ///< time of its first sample
    waveform::RisingTime<qint64> mStamped; ///< in the stamps' unit
    double mLastSeconds = 0.0;             ///< by stamps
    qint64 mFirstStamp = ComtradeBlock::kNoStamp;
    double mStampedSeconds = 0.0; ///< time of the last stamp
    double mRatedSeconds = 0.0;   ///< the same sample's time by the rates
};

} // namespace comtrade
