#pragma once

#include <array>
#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "importing/ImportOptions.h"
#include "waveform/SignalSource.h"

namespace importing {

/** A row of the table of channels. */
struct ChannelReport
{
    std::string mSource;       ///< the source of the channel; "-" for none
    std::string mUnit;         ///< as recorded
    double mFactor = 0.0;      ///< counts for 1 of the unit
    double mRms = 0.0;         ///< of the imported samples, in the unit
    double mPeak = 0.0;        ///< the largest magnitude of the imported samples
    double mWrittenPeak = 0.0; ///< the largest magnitude of all written lines, in the unit
};

/** The result of an import. */
struct ImportReport
{
    std::array<ChannelReport, kChannelCount> mChannels;
    std::vector<std::string> mRemarks; ///< on what was odd, missing, assumed or limited
    size_t mLines = 0;
};

/**
 * Makes a value file from a recording. Reads the source to its end and leaves the output to the
 * caller to commit. Throws CaseError.
 */
ImportReport importSignal(waveform::SignalSource& source, const ImportOptions& options,
                          base::ResultFile& output);

} // namespace importing
