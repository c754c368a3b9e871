#include "importing/ChannelMap.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "channels/ChannelGuess.h"
#include "importing/LeftOutChannels.h"

namespace importing {

namespace {
using channels::Quantity;
using Channels = std::vector<waveform::ChannelDescription>;

std::string listOf(const Channels& channels)
{
    std::string list = channels.empty() ? "\nThere is none." : "\nThere is:";
    for (const waveform::ChannelDescription& channel : channels) {
        list += fmt::format("\n  {} {}", channel.mNumber, channel.mName);
        list += channel.mPhase.empty() ? "" : ", phase " + channel.mPhase;
        list += channel.mUnit.empty() ? ", no unit" : ", unit " + channel.mUnit;
    }
    return list;
}

/** Finds a channel by its number if the text is digits, else by its name. */
size_t findChannel(const waveform::SignalDescription& description, const std::string& text)
{
    const Channels& channels = description.mChannels;
    const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos;
    const auto isMeant = [&](const waveform::ChannelDescription& channel) {
        return (isNumber ? std::to_string(channel.mNumber) : base::trimmed(channel.mName)) == text;
    };
    const auto found = std::find_if(channels.begin(), channels.end(), isMeant);
    if (found == channels.end()) {
        throw base::CaseError(
            fmt::format("{}: no channel '{}'{}", description.mFileName, text, listOf(channels)));
    }
    if (std::find_if(found + 1, channels.end(), isMeant) != channels.end()) {
        throw base::CaseError(fmt::format("{}: several channels '{}': expected a number{}",
                                          description.mFileName, text, listOf(channels)));
    }
    return static_cast<size_t>(found - channels.begin());
}

/** Builds the map. */
class Mapper
{
public:
    Mapper(const waveform::SignalDescription& description, const MappingOptions& options)
        : mDescription(description),
          mOptions(options),
          mGuessed(channels::guessChannels(description.mChannels))
    {
    }

    ChannelMap map();

private:
    std::optional<size_t> guessed(size_t index) const;
    void assign(size_t index, const Assignment& assignment);
    void add(size_t index, size_t source, double factor);
    double sideFactor(const waveform::ChannelDescription& channel);
    [[noreturn]] void refuseEmptyMap() const;
    void remarkMixed(size_t first);
    void remarkObjects();
    void remarkMissing();

    const waveform::SignalDescription& mDescription;
    const MappingOptions& mOptions;
    const channels::GuessedSets mGuessed;
    ChannelMap mMap;
};

ChannelMap Mapper::map()
{
    bool hasAny = false;
    for (size_t index = 0; index < kChannelCount; ++index) {
        const auto& assignment = mOptions.mAssignments[index];
        if (assignment) {
            assign(index, *assignment);
        } else if (const auto source = guessed(index)) {
            mMap.mChannels[index].mText = base::trimmed(mDescription.mChannels[*source].mName);
            add(index, *source, 1.0);
        }
        hasAny = hasAny || !mMap.mChannels[index].mTerms.empty();
    }
    if (!hasAny) {
        refuseEmptyMap();
    }
    remarkMixed(0);
    remarkMixed(kFirstCurrent);
    remarkObjects();
    remarkMissing();
    return mMap;
}

/** The guessed source, unless the user assigned one. */
std::optional<size_t> Mapper::guessed(size_t index) const
{
    return mOptions.mAssignments[index]
               ? std::nullopt
               : mGuessed[index / kFirstCurrent].mSources[index % kFirstCurrent];
}

void Mapper::refuseEmptyMap() const
{
    const auto& assignments = mOptions.mAssignments;
    if (std::all_of(assignments.begin(), assignments.end(),
                    [](const auto& assignment) { return assignment.has_value(); })) {
        throw base::CaseError(
            mDescription.mFileName +
            ": --channels makes all channels 0; expected a source for one at least");
    }
    // A remark may have the reason, for example the encoding of names.
    throw base::CaseError(
        fmt::format("{}: no channel is known by unit and phase as a voltage or "
                    "current; expected --channels{}{}{}",
                    mDescription.mFileName, listOf(mDescription.mChannels),
                    mDescription.mRemarks.empty() ? "" : "\nremark: ",
                    fmt::join(mDescription.mRemarks, "\nremark: ")));
}

void Mapper::remarkMixed(size_t first)
{
    std::vector<std::string> names;
    for (size_t index = first; index < first + kFirstCurrent; ++index) {
        if (guessed(index)) {
            names.push_back(mMap.mChannels[index].mText);
        }
    }
    if (mGuessed[first / kFirstCurrent].mIsMixed && names.size() > 1) {
        mMap.mRemarks.push_back(
            fmt::format("{} are treated as one object, although their names or components differ",
                        fmt::join(names, ", ")));
    }
}

/** Reports different objects, unless the user assigned voltages or currents. */
void Mapper::remarkObjects()
{
    const std::string& voltages = mGuessed[0].mObject;
    const std::string& currents = mGuessed[1].mObject;
    const auto isGuessed = [this](size_t first) {
        return guessed(first) || guessed(first + 1) || guessed(first + 2);
    };
    if (voltages != currents && !voltages.empty() && !currents.empty() && isGuessed(0) &&
        isGuessed(kFirstCurrent)) {
        mMap.mRemarks.push_back(
            fmt::format("the voltages are of {}, the currents of {}: treated "
                        "as one object; see --channels",
                        voltages, currents));
    }
}

void Mapper::assign(size_t index, const Assignment& assignment)
{
    mMap.mChannels[index].mText = assignment.mText;
    for (const AssignedTerm& term : assignment.mTerms) {
        add(index, findChannel(mDescription, term.mSource), term.mFactor);
    }
}

/** The first term decides about the unit. An unknown unit is taken for that of the channel. */
void Mapper::add(size_t index, size_t source, double factor)
{
    const waveform::ChannelDescription& channel = mDescription.mChannels[source];
    MappedChannel& mapped = mMap.mChannels[index];
    channels::ChannelUnit unit = channels::unitOf(channel);
    if (unit.mQuantity == Quantity::Unknown) {
        unit.mQuantity = index < kFirstCurrent ? Quantity::Voltage : Quantity::Current;
    }
    const double perCount =
        unit.mQuantity == Quantity::Voltage ? mOptions.mCountsPerVolt : mOptions.mCountsPerAmpere;
    const double counts = unit.mFactor * sideFactor(channel) * perCount;
    if (mapped.mTerms.empty()) {
        mapped.mUnit = channel.mUnit;
        mapped.mCounts = counts;
        mapped.mQuantity = unit.mQuantity;
    } else if (mapped.mQuantity != unit.mQuantity) {
        throw base::CaseError(fmt::format("{}: channel {}: '{}' adds volts and amperes",
                                          mDescription.mFileName, index, mapped.mText));
    }
    mapped.mTerms.push_back({source, factor * counts / mapped.mCounts});
}

double Mapper::sideFactor(const waveform::ChannelDescription& channel)
{
    const char wanted = mOptions.mSide == TransformerSide::Primary ? 'P' : 'S';
    if (mOptions.mSide == TransformerSide::AsRecorded || channel.mSide == wanted) {
        return 1.0;
    }
    if (channel.mSide == ' ' || channel.mPrimary <= 0.0 || channel.mSecondary <= 0.0) {
        mMap.mRemarks.push_back(
            fmt::format("channel '{}' is left as recorded: the recording does "
                        "not tell its side or its ratio",
                        channel.mName));
        return 1.0;
    }
    const double ratio = channel.mPrimary / channel.mSecondary;
    return wanted == 'P' ? ratio : 1.0 / ratio;
}

void Mapper::remarkMissing()
{
    const LeftOutChannels leftOut(mDescription.mChannels, mMap, mOptions.mAssignments);
    for (size_t index = 0; index < kChannelCount; ++index) {
        if (!leftOut.isMissing(index)) {
            continue;
        }
        const std::string names = leftOut.candidatesFor(index);
        mMap.mRemarks.push_back(
            fmt::format("channel {} ({}) is 0", index, nameOfDeviceChannel(index)) +
            (names.empty() ? ": the recording has none"
                           : "; not used for it: " + names + "; see --channels"));
    }
    const std::string others = leftOut.skippedChannels();
    if (!others.empty()) {
        mMap.mRemarks.push_back("not taken: " + others + "; see --channels");
    }
}
} // namespace

ChannelMap mapChannels(const waveform::SignalDescription& description,
                       const MappingOptions& options)
{
    return Mapper(description, options).map();
}

} // namespace importing
