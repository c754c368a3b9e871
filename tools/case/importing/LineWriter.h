#pragma once

#include <array>

#include "importing/CountLimiter.h"
#include "resampling/SampleTimes.h"
#include "waveform/ValueFileWriter.h"

namespace importing {

/**
 * Writes the lines of an import: rounded, numbered, and with their time in the recording. Borrows
 * the times.
 */
class LineWriter
{
public:
    /**
     * @param doClip continues writing after a value that does not fit; otherwise only counts such
     * values
     */
    LineWriter(base::ResultFile& output, const resampling::SampleTimes& times, bool doClip);

    void writeComments(const std::vector<std::string>& comments);

    /**
     * @param seconds in the recording @param hz of the line; may change at multiples of 360 lines
     */
    void write(const Counts& counts, double seconds, float hz);

    size_t lines() const { return mLines; } ///< written or left out

    /** The largest magnitude of a channel of the device in all lines, in counts. */
    double peak(size_t channel) const { return mPeaks.at(channel); }
    const CountLimiter& limiter() const { return mLimiter; }

private:
    waveform::ValueFileWriter mWriter;
    const resampling::SampleTimes& mTimes;
    bool mDoClip;
    size_t mLines = 0;
    std::array<double, kChannelCount> mPeaks{};
    CountLimiter mLimiter;
};

} // namespace importing
