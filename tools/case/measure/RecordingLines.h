#pragma once

#include <optional>
#include <string>
#include <vector>

#include "importing/ChannelMap.h"
#include "measure/SampleGaps.h"
#include "resampling/Interpolator.h"
#include "waveform/SignalSource.h"

namespace measure {

/**
 * The channels of the device from a recording of another instrument, in V and A, at equal steps.
 * Values between the samples are interpolated (band-limited). Reads the recording in overlapping
 * parts, so its memory does not grow with the length.
 */
class RecordingLines
{
public:
    /** Borrows the source. @param linesPerSecond of the result */
    RecordingLines(waveform::SignalSource& source, const importing::ChannelMap& map,
                   double linesPerSecond);

    /** As SignalSource::read(). @throws CaseError for fewer than two instants */
    bool read(waveform::SignalBlock& block);

    /** Bandwidth of the first part of the recording. */
    double maxHertz() const { return mMaxHertz; }

    /** Number of times that the rate changed or samples were missing. */
    size_t breaks() const { return mBreaks; }
    const SampleGaps& gaps() const { return mGaps; }

private:
    /** What a channel gets from one of the source. */
    struct Term
    {
        size_t mChannel;
        size_t mColumn;
        double mFactor;
    };

    void makeTerms(const importing::ChannelMap& map);
    bool readPart();
    bool collect();
    void dropOld();
    void findRate();
    void addLine(double seconds, size_t index, waveform::SignalBlock* block);

    waveform::SignalSource& mSource;
    double mLinesPerSecond;
    std::vector<size_t> mSources; ///< channel of the source, a column each
    std::vector<Term> mTerms;
    waveform::SignalBlock mRead;
    std::vector<double> mSeconds;
    std::vector<resampling::SourceColumn> mColumns;
    std::optional<resampling::SampleTimes> mTimes;
    std::optional<resampling::Interpolator> mInterpolator;
    std::vector<double> mValues; ///< of the columns, at one instant
    size_t mNextLine = 0;
    double mUpTo = -1.0;  ///< s: this part has lines before that
    double mMargin = 0.0; ///< s that the kernel reaches
    double mMaxHertz = 0.0;
    bool mIsAtEnd = false; ///< of the source
    size_t mBreaks = 0;
    SampleGaps mGaps{SampleGaps::Clock::Any};
};

} // namespace measure
