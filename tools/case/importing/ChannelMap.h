#pragma once

#include <array>
#include <string>
#include <vector>

#include "SampleRecord.h"
#include "channels/ChannelKind.h"
#include "importing/ChannelAssignments.h"
#include "waveform/SignalSource.h"

namespace importing {

/** Which side of the transformers the values are to belong to. */
enum class TransformerSide
{
    AsRecorded,
    Primary,
    Secondary
};

struct MappingOptions
{
    Assignments mAssignments; ///< what is not assigned is found by unit and phase
    TransformerSide mSide = TransformerSide::AsRecorded;
    double mCountsPerVolt = 1000.0;
    double mCountsPerAmpere = 1000.0;
};

/** The channels of the device before it are voltages. */
inline constexpr size_t kFirstCurrent = kChannelCount / 2;

/** What one channel of the device gets. */
struct MappedChannel
{
    struct Term
    {
        size_t mSource; ///< channel of the recording, from 0
        double mFactor; ///< in the unit of the first term
    };

    std::vector<Term> mTerms; ///< the channel is their sum; 0 without one
    std::string mText = "-";  ///< for the user: the sum as it is asked for
    std::string mUnit;        ///< of the sum
    double mCounts = 0.0;     ///< for 1 of that unit
    channels::Quantity mQuantity = channels::Quantity::Unknown;
};

struct ChannelMap
{
    std::array<MappedChannel, kChannelCount> mChannels;
    std::vector<std::string> mRemarks; ///< what is missing or had to be assumed
};

/**
 * Decides which channels of the recording go where and by which factors. Throws CaseError for a
 * source that is not there and when nothing fits, with a list of what there is.
 */
ChannelMap mapChannels(const waveform::SignalDescription& description,
                       const MappingOptions& options);

} // namespace importing
