#pragma once

#include <array>
#include <bitset>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "importing/ChannelMap.h"
#include "measure/RecordingLines.h"
#include "measure/SampleGaps.h"
#include "waveform/SignalSource.h"

namespace measure {

/** The input and its settings. */
struct SignalOptions
{
    std::string mPath;
    std::string mEncoding;               ///< of the texts in a recording; may be empty
    importing::Assignments mAssignments; ///< of the channels of a recording
    double mCountsPerVolt = 1000.0;      ///< of a value file or recording of the driver
    double mCountsPerAmpere = 1000.0;
    std::optional<qint64> mBeginUtcNs; ///< of the first sample; none: from the file
    std::optional<double> mNominalHz;  ///< 50 or 60; none: from the file or its samples
};

/**
 * Any input as the eight channels of the device in V and A, block by block, with 360 lines per
 * period of the nominal frequency. Value files and recordings of the driver are only scaled. Other
 * recordings are interpolated; they have the channels that an import would take, on the side of the
 * transformers where they were recorded. For missing values of the device the previous value is
 * held.
 */
class MeasuredSignal
{
public:
    /** @throws CaseError if the input cannot be read, or not measured with these options */
    explicit MeasuredSignal(const SignalOptions& options);

    /** As SignalSource::read(): replaces the block; false at the end. */
    bool read(waveform::SignalBlock& block);

    double progress() const { return mSource->progress(); }
    const waveform::SignalDescription& description() const { return mSource->description(); }
    qint64 beginUtcNs() const { return mBeginUtcNs; }
    double nominalHz() const { return mNominalHz; } ///< 50 or 60
    double maxHertz() const { return mMaxHertz; }   ///< up to which its content is known

    /** The channels that it has; the others are 0. */
    std::bitset<kChannelCount> channels() const { return mChannels; }

    /** Assumptions, for the user; complete at the end. */
    std::vector<std::string> remarks() const;

private:
    void findBegin(const std::optional<qint64>& given);
    void findNominal(const std::optional<double>& given);
    void findNominal(const SignalOptions& options, const importing::ChannelMap& map);
    void mapRecording(const SignalOptions& options);
    bool readDeviceBlock(waveform::SignalBlock& block);
    void scale(waveform::SignalBlock& block);

    std::unique_ptr<waveform::SignalSource> mSource;
    std::unique_ptr<RecordingLines> mRecording; ///< null for a value file or driver's recording
    std::array<double, kChannelCount> mUnitsPerCount{}; ///< of those
    std::bitset<kChannelCount> mChannels;
    std::array<double, kChannelCount> mLastValues{};
    size_t mMissing = 0;
    SampleGaps mGaps{SampleGaps::Clock::Even}; ///< of a driver's recording
    qint64 mBeginUtcNs = 0;
    std::vector<std::string> mRemarks;
    double mNominalHz = 0.0;
    double mMaxHertz = 0.0;
    waveform::SignalBlock mFirstBlock; ///< read already, to know the frequency; else empty
};

} // namespace measure
