#pragma once

#include <array>
#include <string>
#include <vector>

#include "SampleRecord.h"
#include "channels/ChannelKind.h"
#include "importing/ChannelAssignments.h"
#include "waveform/SignalSource.h"

namespace importing {

/** The side of the transformers for which values are wanted. */
enum class TransformerSide
{
    AsRecorded,
    Primary,
    Secondary
};

struct MappingOptions
{
    Assignments mAssignments; ///< other channels are found by unit and phase
    TransformerSide mSide = TransformerSide::AsRecorded;
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
};

/** The channels of the device before this one are voltages. */
inline constexpr size_t kFirstCurrent = kChannelCount / 2;

/** The source of one channel of the device. */
struct MappedChannel
{
    struct Term
    {
        size_t mSource; ///< channel of the recording, from 0
        double mFactor; ///< in the unit of the first term
    };

    std::vector<Term> mTerms; ///< the channel is their sum; 0 without terms
    std::string mText = "-";  ///< for the user: the sum as given
    std::string mUnit;        ///< of the sum
    double mCounts = 0.0;     ///< counts for 1 of that unit
    channels::Quantity mQuantity = channels::Quantity::Unknown;
};

struct ChannelMap
{
    std::array<MappedChannel, kChannelCount> mChannels;
    std::vector<std::string> mRemarks; ///< what is missing or had to be assumed
};

/**
 * Assigns channels of the recording to those of the device, with factors. Throws CaseError, with a
 * list of the channels, for an unknown source and if no channel fits.
 */
ChannelMap mapChannels(const waveform::SignalDescription& description,
                       const MappingOptions& options);

} // namespace importing
