#pragma once

#include <array>

#include "importing/CountLimiter.h"
#include "resampling/SampleTimes.h"
#include "waveform/ValueFileWriter.h"

namespace importing {

/**
 * Writes the lines of an import: rounded, numbered, and with the time in the recording at
 * which each was taken. Borrows the times.
 */
class LineWriter
{
public:
    /** @param doClip go on writing after a value that does not fit; else only count such values */
    LineWriter(base::ResultFile& output, const resampling::SampleTimes& times, bool doClip);

    void writeComments(const std::vector<std::string>& comments);

    /** @param seconds in the recording @param hz what the line says; may change at multiples of
     * 360 lines */
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
