#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/ProgressLine.h"
#include "waveform/SignalSource.h"

namespace exporting {

/** The part of the input that is exported, in s from its first sample. */
struct ExportPart
{
    double mFrom = 0.0;
    double mTo = std::numeric_limits<double>::infinity();
};

/** Facts about a signal that are needed before it can be written. */
struct ExportFacts
{
    size_t mSamples = 0;
    double mSeconds = 0.0;        ///< from the first to the last
    double mSkippedSeconds = 0.0; ///< from the first sample of the input to the first exported one
    double mFrequency = 0.0;      ///< Hz at the beginning; rounded to two decimals if computed
    size_t mMissing = 0;          ///< values of -2147483648
    std::vector<waveform::SampleRate> mRates; ///< empty if only time stamps give the times
};

/**
 * The samples in a part of a value file or a recording of the driver, in counts, with times from
 * the first of them on. To be read once.
 */
class ExportedSignal
{
public:
    /** @throws CaseError if the file is neither. */
    ExportedSignal(const std::string& path, const ExportPart& part);

    const waveform::SignalDescription& description() const { return mSource->description(); }

    /** As SignalSource::read(). */
    bool read(waveform::SignalBlock& block);

    /** Reads all of it. @throws CaseError if the part has no samples */
    ExportFacts readFacts();

private:
    std::unique_ptr<waveform::SignalSource> mSource;
    base::ProgressLine mProgress{"exporting"};
    ExportPart mPart;
    size_t mSamples = 0;        ///< so far
    double mFirstSeconds = 0.0; ///< time in the input of the first
};

} // namespace exporting
