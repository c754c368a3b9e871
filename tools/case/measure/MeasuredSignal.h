#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "importing/ChannelMap.h"
#include "waveform/SignalSource.h"

namespace measure {

/** What is measured. */
struct SignalOptions
{
    std::string mPath;
    std::string mEncoding;               ///< of the texts in a recording; may be empty
    importing::Assignments mAssignments; ///< of the channels of a recording
    double mCountsPerVolt = 1000.0;      ///< of a value file or recording of the driver
    double mCountsPerAmpere = 1000.0;
    std::optional<qint64> mBeginUtcNs; ///< of the first sample, where the file does not say it
};

/**
 * Any input as the eight channels of the device in V and A, block by block: value files and
 * recordings of the driver by their scale, other recordings by the channels that an import would
 * take, on the side of the transformers that they were recorded on.
 */
class MeasuredSignal
{
public:
    /** @throws CaseError for what cannot be read, or measured with these options */
    explicit MeasuredSignal(const SignalOptions& options);

    /** As SignalSource::read(): replaces the block; false at the end. */
    bool read(waveform::SignalBlock& block);

    double progress() const { return mSource->progress(); }
    const waveform::SignalDescription& description() const { return mSource->description(); }
    qint64 beginUtcNs() const { return mBeginUtcNs; }

    /** What had to be assumed, for the user; complete at the end. */
    std::vector<std::string> remarks() const;

private:
    struct Term
    {
        size_t mChannel; ///< of the device
        size_t mSource;
        double mFactor;
    };

    void findBegin(const std::optional<qint64>& given);
    void mapRecording(const importing::Assignments& assignments);
    void sumTerms(waveform::SignalBlock& block);

    std::unique_ptr<waveform::SignalSource> mSource;
    std::vector<Term> mTerms;
    qint64 mBeginUtcNs = 0;
    std::vector<std::string> mRemarks;
    waveform::SignalBlock mRead; ///< kept for its memory
};

} // namespace measure
