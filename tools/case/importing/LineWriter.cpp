#include "importing/LineWriter.h"

#include <algorithm>
#include <cmath>

namespace importing {

LineWriter::LineWriter(base::ResultFile& output, const resampling::SampleTimes& times, bool doClip)
    : mWriter(output), mTimes(times), mDoClip(doClip)
{
}

void LineWriter::writeComments(const std::vector<std::string>& comments)
{
    mWriter.writeComments(comments);
}

void LineWriter::write(const Counts& counts, double seconds, float hz)
{
    waveform::ValueLine line;
    line.mNumber = static_cast<qint64>(mTimes.nearestSample(seconds)) + 1;
    line.mSeconds = seconds;
    line.mAuxWord = static_cast<quint32>(mLines++);
    line.mFrequency = hz;
    line.mValues = mLimiter.round(counts, seconds);
    for (size_t channel = 0; channel < mPeaks.size(); ++channel) {
        mPeaks[channel] =
            std::max(mPeaks[channel], std::abs(static_cast<double>(line.mValues[channel])));
    }
    if (mDoClip || mLimiter.clipped() == 0) {
        mWriter.write(line);
    }
}

} // namespace importing
